/** What a page, a file or a request for a picture can fail with. */
export type ErrorCode =
    | 'not-tiff'      // no TIFF file, or its directories cannot be read
    | 'unsupported'   // a page that is not Group 4, or of a form that is not read
    | 'limit'         // sizes beyond what is opened
    | 'damaged'       // coded data that cannot be decoded, where the caller asked for that to be an error
    | 'argument'      // a request outside the page, or of a size of 0
    | 'memory'
    | 'network'       // a file behind a URL that could not be read
    | 'cancelled'
    | 'internal'
    | 'ended';        // the file was closed, or its worker was ended

/** An error with a sentence for people; where one place of the page is meant, with its tile and row. */
export class PageError extends Error {
    override readonly name = 'PageError';
    constructor(readonly code: ErrorCode, message: string, readonly tile?: number, readonly row?: number) {
        super(message);
    }

    /** As it travels between a worker and its page. */
    toPlain(): PlainError {
        return {code: this.code, message: this.message, tile: this.tile, row: this.row};
    }
    static fromPlain({code, message, tile, row}: PlainError): PageError {
        return new PageError(code, message, tile, row);
    }
}
export interface PlainError {
    code: ErrorCode;
    message: string;
    tile?: number;
    row?: number;
}
