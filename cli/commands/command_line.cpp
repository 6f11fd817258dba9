#include "commands/command_line.h"

#include <cstdlib>

const char* const kExitCodes =
    "Exit codes: 0 good; 1 usage or file error; 2 damaged Group 4 data (what could be decoded is written);\n"
    "3 not a bilevel Group 4 TIFF, or not supported; 4 a limit of size or memory. Of several files the most serious: "
    "2, 1, 4, 3.";

namespace {

void addPages(CLI::App& app, PageList& pages, const char* what) {
    addParsed(
        app, "--page", pages, [](const std::string& text) { return PageList(text); }, what)
        ->type_name("PAGES");
}

void addInputs(CLI::App& app, std::vector<std::string>& inputs) {
    app.add_option("INPUT", inputs, "The inputs; none: a list on standard input")->type_name("");
}

/// The one input of a command, or any number of a batch's.
void addInput(CLI::App& app, const char* what, std::string& input, std::vector<std::string>* inputs) {
    if (inputs) addInputs(app, *inputs);
    else app.add_option("IN", input, what)->required()->type_name("");
}

void addOutput(CLI::App& app, OutputOptions& output, bool required, const char* what) {
    app.add_option("-o,--output", output.path, what)->required(required)->type_name("OUT");
    app.add_flag("-f,--force", output.force, "Replace the input, should the output be the same file");
    app.add_flag("-n,--no-clobber", output.keepExisting, "Leave an output that exists already, and do nothing");
}

/// The options that render and convert share.
template <class Options>
void addCommon(CLI::App& app, Options& options, std::vector<std::string>* inputs) {
    addInput(app, "A TIFF, PDF, PNG, or raw PBM, PGM or PPM file; - is standard input", options.input, inputs);
    addOutput(app, options.output, inputs == nullptr,
              "The picture: .png, .pbm, .pgm, .ppm, .pnm, .tif, .jpg or .webp; - is standard output. {name}, {ext} and "
              "{dir} stand for parts of the input's name, {page} or %03d for the page");
    app.add_option("--format", options.format, "The picture's format, whatever the ending of its name; PNG for -")
        ->type_name("FORMAT");
    app.add_option("--quality", options.quality,
                   "Of JPEG, 85 otherwise, or of WebP, which keeps every pixel otherwise: 1 to 100")
        ->check(CLI::Range(1, 100))
        ->type_name("N");
    addPages(app, options.pages,
             inputs ? "The pages of each file, from 1, such as 1-3,7,last; all otherwise"
                    : "The pages of a file, from 1, such as 1-3,7,last or all; the first otherwise");
    app.add_option("--max-pixels", options.maxPixels, "Most pixels of the picture")
        ->capture_default_str()
        ->type_name("N");
    app.add_flag("!--no-orient", options.show.orient,
                 "Leave pixels as they are stored, whatever the orientation tag says");
    app.add_flag("--square", options.show.square,
                 "Make pixels square: where resolutions differ, the side of the lower one grows");
    app.add_flag("-q,--quiet", options.quiet, "No progress line");
    app.add_flag("--stats", options.stats, "Print time, peak memory and sizes on standard error");
}

}  // namespace

void addInfo(CLI::App& app, InfoOptions& options) {
    CLI::App& info = *app.add_subcommand("info", "Tell what TIFF files hold; decodes nothing");
    info.add_option("FILE", options.files, "TIFF files; - is standard input")->required()->type_name("");
    addPages(info, options.pages, "These pages only, from 1, such as 1-3,7,last");
    info.add_flag("--json", options.json, "Print JSON: a list of files, each with a list of pages");
    info.footer(kExitCodes);
}

/// As long as the options are many: a statement for each.
void addRender(CLI::App& app, RenderOptions& options, std::vector<std::string>* inputs) {
    CLI::App& render = *app.add_subcommand("render", "Draw a page or picture into a picture file");
    addCommon(render, options, inputs);
    addParsed(render, "--rect", options.rect, parseRect, "Only this part of the page as it is shown, in pixels")
        ->type_name("X,Y,W,H");
    CLI::Option* const scale =
        addParsed(render, "--scale", options.factor, parseFactor, "Factor, such as 0.1, 1/10 or 10%")->type_name("F");
    CLI::Option* const size =
        addParsed(render, "--size", options.size, parseSize, "Exactly this size")->type_name("WxH");
    addParsed(render, "--fit", options.fit, parseSize, "The largest size of the same shape within this one")
        ->type_name("WxH")
        ->excludes(scale)
        ->excludes(size);
    size->excludes(scale);
    render.add_option("--dpi", options.dpi, "So many pixels to the inch, by the page's resolution")
        ->type_name("N")
        ->check(CLI::Range(0.01, 1e6))
        ->excludes(scale)
        ->excludes(size)
        ->excludes("--fit");
    addChoice<Mode>(
        render, "--mode", options.mode,
        {{"grey", Mode::grey}, {"ink", Mode::ink}, {"copy", Mode::copy}, {"area", Mode::area}},
        "How to reduce black and white: to greys (the default), to black and white without losing "
        "foreground, or not at all. area also takes means of greys and colours, which are reduced by leaving out "
        "pixels otherwise");
    addChoice<ImgMirT>(render, "--mirror", options.mirror, {{"x", ImgMirX}, {"y", ImgMirY}},
                       "x: top and bottom change places; y: left and right");
    render.add_option("--rotate", options.angle, "Turn counter-clockwise; the corners that leave the picture are cut")
        ->type_name("DEG")
        ->check(CLI::Range(-1e6, 1e6));
    addChoice<Background>(render, "--background", options.background,
                          {{"auto", Background::automatic}, {"white", Background::white}, {"black", Background::black}},
                          "Which colour is the page's ground, the other being foreground; auto (the default) counts "
                          "pixels. Corners that a turn uncovers are white, or black with black");
    addChoice<bool>(render, "--on-error", options.salvage, {{"fail", false}, {"salvage", true}},
                    "Damaged data: end the picture there (the default), or decode every tile on its own and leave "
                    "damaged ones blank from the bad row on");
    render.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of the page")
        ->capture_default_str()
        ->type_name("N");
    render.footer("The page is set upright; the part is cut, scaled, mirrored and turned, in this order.\n" +
                  std::string(kExitCodes));
}

void addConvert(CLI::App& app, ConvertOptions& options, std::vector<std::string>* inputs) {
    CLI::App& convert = *app.add_subcommand("convert", "Convert a page or picture to another kind of pixel");
    addCommon(convert, options, inputs);
    addChoice<Pixels>(convert, "--to", options.to,
                      {{"bilevel", Pixels::bilevel}, {"palette", Pixels::palette}, {"rgb", Pixels::rgb}},
                      "The kind: black and white by error diffusion, palette, or colour")
        ->required();
    convert.footer(kExitCodes);
}

/// encode and repack.
void addPacking(CLI::App& packing, const char* input, RepackOptions& options, std::vector<std::string>* inputs) {
    addInput(packing, input, options.input, inputs);
    addPages(packing, options.pages, "The pages to take, from 1, such as 1-3,7,last; all otherwise");
    addOutput(packing, options.output, inputs == nullptr,
              "The TIFF file, or, by its ending, PDF file; - is standard output");
    CLI::Option* const tile =
        packing.add_option("--tile", options.layout.tile, "Square tiles of this side, a multiple of 16; 512 otherwise")
            ->type_name("N")
            ->check([](const std::string& text) {
                const unsigned long side = std::strtoul(text.c_str(), nullptr, 10);
                return side > 0 && side % 16 == 0 && side <= 65536
                           ? ""
                           : "the side of a tile is a multiple of 16, at most 65536";
            });
    CLI::Option* const rows = packing.add_option("--strip-rows", options.layout.stripRows, "Strips of so many rows")
                                  ->type_name("N")
                                  ->check(CLI::PositiveNumber)
                                  ->excludes(tile);
    packing.add_flag("--single-strip", options.layout.singleStrip, "One strip a page")->excludes(tile)->excludes(rows);
    packing.add_flag("--dither", options.dither,
                     "Take grey and colour pages of TIFF files, too, in black and white by error diffusion");
    packing.add_flag("--check,!--no-check", options.check,
                     "Decode the result and compare every row (the default), or do not");
    packing.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of a page")
        ->capture_default_str()
        ->type_name("N");
    packing.add_flag("-q,--quiet", options.quiet, "No progress line");
    packing.footer(kExitCodes);
}

void addVerify(CLI::App& app, VerifyOptions& options, std::vector<std::string>* inputs) {
    CLI::App& verify = *app.add_subcommand("verify", "Decode every row of every page and name what is damaged");
    if (inputs) addInputs(verify, *inputs);
    else
        verify.add_option("FILE", options.files, "Black and white TIFF or PDF files; - is standard input")
            ->required()
            ->type_name("");
    addPages(verify, options.pages, "These pages only, from 1, such as 1-3,7,last");
    verify.add_flag("--json", options.json, "Print JSON: a list of files, each with a list of pages");
    verify.add_flag("--reference", options.reference, "Compare every pixel with libtiff's decode too");
    verify.add_option("--max-input-pixels", options.maxInputPixels, "Most pixels of a page")
        ->capture_default_str()
        ->type_name("N");
    verify.footer(kExitCodes);
}
