#include "base/failure.h"
#include "picture/picture_reader.h"

#include <fmt/format.h>

#include <cctype>
#include <cstdio>

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

class PnmReader : public PictureReader {
public:
    explicit PnmReader(InputFile input) : name_(input.name()), file_(fdopen(input.release(), "rb")) {
        if (!file_) throw Failure(Exit::failed, name_ + ": cannot be read");
        std::getc(file_.get());
        const int kind = std::getc(file_.get());
        if (kind < '4')
            throw Failure(Exit::unsupported,
                          fmt::format("{}: the plain text format P{:c} is not supported", name_, kind));
        pixels = kind == '4' ? Pixels::bilevel : kind == '5' ? Pixels::grey : Pixels::rgb;
        size.width = number();
        size.height = number();
        if (kind != '4') maximum_ = number();
        if (size.width == 0 || size.height == 0 || maximum_ == 0) fail();
        if (maximum_ > 255)
            throw Failure(Exit::unsupported, fmt::format("{}: more than 8 bits a component are not supported", name_));
    }

    void nextRow(unsigned char* row) override {
        const std::size_t bytes = rowBytes();
        if (std::fread(row, 1, bytes, file_.get()) != bytes) fail();
        if (pixels == Pixels::bilevel || maximum_ == 255) return;
        for (std::size_t i = 0; i < bytes; ++i)
            row[i] = static_cast<unsigned char>((std::min<unsigned>(row[i], maximum_) * 255 + maximum_ / 2) / maximum_);
    }

private:
    [[noreturn]] void fail() const { throw Failure(Exit::failed, name_ + ": damaged or cut off"); }

    /// A number of the header and the one character after it.
    std::uint32_t number() {
        int c = std::getc(file_.get());
        while (std::isspace(c) || c == '#') {
            if (c == '#')
                while (c != '\n' && c != EOF) c = std::getc(file_.get());
            c = std::getc(file_.get());
        }
        std::uint64_t value = 0;
        if (!std::isdigit(c)) fail();
        for (; std::isdigit(c); c = std::getc(file_.get())) {
            value = 10 * value + static_cast<unsigned>(c - '0');
            if (value > 0x7FFFFFFF) fail();
        }
        if (!std::isspace(c)) fail();
        return static_cast<std::uint32_t>(value);
    }

    const std::string name_;
    const std::unique_ptr<std::FILE, FileCloser> file_;
    std::uint32_t maximum_ = 255;
};

}  // namespace

std::unique_ptr<PictureReader> openPnm(InputFile input) { return std::make_unique<PnmReader>(std::move(input)); }
