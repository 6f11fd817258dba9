#include "pdf/pdf_images.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <cmath>
#include <map>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDFMatrix.hh>
#include <utility>

namespace {

constexpr const char* kCcitt = "/CCITTFaxDecode";
constexpr double kPointsPerInch = 72;

long long integer(QPDFObjectHandle dictionary, const char* key, long long otherwise) {
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isInteger() ? value.getIntValue() : otherwise;
}

bool boolean(QPDFObjectHandle dictionary, const char* key, bool otherwise) {
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isBool() ? value.getBoolValue() : otherwise;
}

std::uint32_t side(const QPDFObjectHandle& dictionary, const char* key, long long otherwise) {
    const long long value = integer(dictionary, key, otherwise);
    if (value < 0 || value > 0x7FFFFFFF)
        throw Failure(Exit::unsupported, fmt::format("{} of {} is no size", std::string(key + 1), value));
    return static_cast<std::uint32_t>(value);
}

/// A filter or a parameter by its number: files have a single one without an array around it.
std::vector<QPDFObjectHandle> listOf(QPDFObjectHandle value) {
    if (value.isArray()) return value.getArrayAsVector();
    if (value.isNull()) return {};
    return {value};
}

/// Follows the operators that move and draw.
class Drawn : public QPDFObjectHandle::ParserCallbacks {
public:
    void handleObject(QPDFObjectHandle object) override {
        if (!object.isOperator()) {
            if (operands_.size() < 16) operands_.push_back(object);
            return;
        }
        const std::string name = object.getOperatorValue();
        if (name == "q" && saved_.size() < 1000) saved_.push_back(matrix_);
        if (name == "Q" && !saved_.empty()) {
            matrix_ = saved_.back();
            saved_.pop_back();
        }
        if (name == "cm") concatenate();
        if (name == "Do" && !operands_.empty() && operands_.back().isName())
            places.try_emplace(operands_.back().getName(), Placement{matrix_.a, matrix_.b, matrix_.c, matrix_.d});
        operands_.clear();
    }
    void handleEOF() override {}

    std::map<std::string, Placement> places;

private:
    void concatenate() {
        if (operands_.size() != 6) return;
        double v[6];
        for (std::size_t i = 0; i < 6; ++i) {
            if (!operands_[i].isNumber()) return;
            v[i] = operands_[i].getNumericValue();
        }
        matrix_.concat(QPDFMatrix(v[0], v[1], v[2], v[3], v[4], v[5]));
    }

    QPDFMatrix matrix_;
    std::vector<QPDFMatrix> saved_;
    std::vector<QPDFObjectHandle> operands_;
};

/// How the page turns and mirrors the image: TIFF's orientation, 1 where it does neither or neither by right angles.
std::uint16_t orientationOf(Placement place, int rotation) {
    for (int turned = 0; turned < rotation; turned += 90) place = {place.b, -place.a, place.d, -place.c};
    const auto sign = [](double value, double other) {
        return std::abs(value) < 1e-3 * std::abs(other) ? 0 : value > 0 ? 1 : -1;
    };
    const int a = sign(place.a, place.b), b = sign(place.b, place.a), c = sign(place.c, place.d),
              d = sign(place.d, place.c);
    constexpr int kDirections[8][4] = {{1, 0, 0, 1},   {-1, 0, 0, 1}, {-1, 0, 0, -1}, {1, 0, 0, -1},
                                       {0, -1, -1, 0}, {0, -1, 1, 0}, {0, 1, 1, 0},   {0, 1, -1, 0}};
    for (std::uint16_t i = 0; i < 8; ++i)
        if (kDirections[i][0] == a && kDirections[i][1] == b && kDirections[i][2] == c && kDirections[i][3] == d)
            return static_cast<std::uint16_t>(i + 1);
    return 1;
}

/// Whether 0 in the image's samples is dark; nothing when its colours are none that the tool knows.
bool zeroIsDark(QPDFObjectHandle image, std::string& unsupported) {
    const bool mask = boolean(image, "/ImageMask", false);
    QPDFObjectHandle decode = image.getKey("/Decode");
    const bool inverted = decode.isArray() && decode.getArrayNItems() == 2 && decode.getArrayItem(0).isNumber() &&
                          decode.getArrayItem(0).getNumericValue() > 0.5;
    if (mask) return !inverted;  // 0 paints
    QPDFObjectHandle space = image.getKey("/ColorSpace");
    const std::string name = space.isName() ? space.getName()
                             : space.isArray() && space.getArrayNItems() > 0 && space.getArrayItem(0).isName()
                                 ? space.getArrayItem(0).getName()
                                 : "";
    if (name == "/Separation") return inverted;  // 1 is all of the ink
    if (name == "/Indexed" || name == "/I") {
        QPDFObjectHandle table = space.getArrayItem(3);
        const std::string bytes = table.isString() ? table.getStringValue() : std::string();
        if (bytes.size() >= 2 && bytes.size() % 2 == 0) {
            const auto sum = [&](std::size_t from) {
                int total = 0;
                for (std::size_t i = 0; i < bytes.size() / 2; ++i) total += static_cast<unsigned char>(bytes[from + i]);
                return total;
            };
            return (sum(0) <= sum(bytes.size() / 2)) != inverted;
        }
    }
    const bool grey = name == "/DeviceGray" || name == "/G" || name == "/CalGray" ||
                      (name == "/ICCBased" && integer(space.getArrayItem(1).getDict(), "/N", 0) == 1);
    if (!grey) unsupported = fmt::format("its colours are {}", name.empty() ? "not given" : name.substr(1));
    return !inverted;
}

std::string filterOf(QPDFObjectHandle image) {
    std::vector<QPDFObjectHandle> filters = listOf(image.getKey("/Filter"));
    if (filters.empty() || !filters.back().isName()) return "";
    const std::string name = filters.back().getName();
    return name == "/CCF" ? kCcitt : name;
}

void readFax(PdfImage& image, QPDFObjectHandle dictionary) {
    const std::size_t filters = listOf(dictionary.getKey("/Filter")).size();
    const std::vector<QPDFObjectHandle> parameters = listOf(dictionary.getKey("/DecodeParms"));
    // The last filter's, where there is one for each.
    image.fax = faxParameters(parameters.size() == filters ? parameters.back() : QPDFObjectHandle::newNull());
    const auto rowBytes = [](std::uint32_t width) { return (std::uint64_t{width} + 7) / 8; };
    if (rowBytes(image.fax.columns) != rowBytes(image.size.width))
        throw Failure(Exit::unsupported, fmt::format("its codes are for {} columns, but it is {} wide",
                                                     image.fax.columns, image.size.width));
    if (integer(dictionary, "/BitsPerComponent", 1) != 1)
        throw Failure(Exit::unsupported, "it has more than one bit a pixel");
    image.codedBlackIsInk = zeroIsDark(dictionary, image.unsupported) != image.fax.blackIsOne;
}

PdfImage described(QPDFObjectHandle stream, unsigned page) {
    PdfImage image;
    image.stream = stream;
    image.documentPage = page;
    QPDFObjectHandle dictionary = stream.getDict();
    try {
        image.size = {side(dictionary, "/Width", 0), side(dictionary, "/Height", 0)};
        if (image.size.pixels() == 0) throw Failure(Exit::unsupported, "it has no pixels");
        const std::string filter = filterOf(dictionary);
        if (filter == kCcitt) readFax(image, dictionary);
        else
            image.unsupported = fmt::format("its coding is {}, not CCITT; pdfimages takes such images out of the file",
                                            filter.empty() ? "none" : filter.substr(1));
    } catch (const Failure& failure) {
        image.unsupported = failure.what();
    }
    return image;
}

}  // namespace

FaxParameters faxParameters(QPDFObjectHandle dictionary) {
    FaxParameters fax;
    if (!dictionary.isDictionary()) return fax;
    const long long k = integer(dictionary, "/K", 0);
    fax.k = k < 0 ? -1 : k > 0 ? 1 : 0;
    fax.columns = side(dictionary, "/Columns", fax.columns);
    fax.rows = side(dictionary, "/Rows", 0);
    fax.blackIsOne = boolean(dictionary, "/BlackIs1", false);
    fax.byteAligned = boolean(dictionary, "/EncodedByteAlign", false);
    fax.endOfLine = boolean(dictionary, "/EndOfLine", false);
    fax.endOfBlock = boolean(dictionary, "/EndOfBlock", true);
    return fax;
}

std::vector<PdfImage> imagesOf(QPDFPageObjectHelper page, unsigned number) {
    page.externalizeInlineImages(0);
    Drawn drawn;
    page.parseContents(&drawn);
    QPDFObjectHandle turn = page.getAttribute("/Rotate", false), unit = page.getObjectHandle().getKey("/UserUnit");
    const int rotation = turn.isInteger() ? (turn.getIntValueAsInt() % 360 + 360) % 360 : 0;
    const double inch = kPointsPerInch / (unit.isNumber() && unit.getNumericValue() > 0 ? unit.getNumericValue() : 1);
    std::vector<PdfImage> images;
    page.forEachImage(true, [&](QPDFObjectHandle& stream, QPDFObjectHandle& dictionary, const std::string& name) {
        PdfImage image = described(stream, number);
        const auto place = drawn.places.find(name);
        const bool direct = place != drawn.places.end() &&
                            dictionary.getKey(name).getObjGen() ==
                                page.getAttribute("/Resources", false).getKey("/XObject").getKey(name).getObjGen();
        const Placement where = direct ? place->second : Placement{0, 0, 0, 0};
        const double width = std::hypot(where.a, where.b) / inch, height = std::hypot(where.c, where.d) / inch;
        if (width > 1e-4 && height > 1e-4) {
            image.dpiX = image.size.width / width;
            image.dpiY = image.size.height / height;
        }
        image.orientation = orientationOf(direct ? where : Placement{}, rotation);
        images.push_back(std::move(image));
    });
    if (images.empty()) {
        images.emplace_back();
        images.back().documentPage = number;
        images.back().unsupported = "it has no image; pdftoppm or Ghostscript draws such pages";
    }
    return images;
}

std::string codesOf(QPDF& document, const PdfImage& image) {
    QPDFObjectHandle stream = image.stream, dictionary = stream.getDict();
    std::vector<QPDFObjectHandle> filters = listOf(dictionary.getKey("/Filter"));
    std::shared_ptr<Buffer> data = stream.getRawStreamData();
    if (filters.size() > 1) {
        std::vector<QPDFObjectHandle> parameters = listOf(dictionary.getKey("/DecodeParms"));
        filters.pop_back();
        parameters.resize(filters.size(), QPDFObjectHandle::newNull());
        QPDFObjectHandle outer = QPDFObjectHandle::newStream(&document, data);
        outer.getDict().replaceKey("/Filter", QPDFObjectHandle::newArray(filters));
        outer.getDict().replaceKey("/DecodeParms", QPDFObjectHandle::newArray(parameters));
        data = outer.getStreamData(qpdf_dl_generalized);
    }
    return {reinterpret_cast<const char*>(data->getBuffer()), data->getSize()};
}
