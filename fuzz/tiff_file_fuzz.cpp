// Whatever a TIFF file says, the tool ends with a picture, a report or a message, within the sizes it was allowed.

#include "tiff/tiff_source.h"
#include "use_page.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const MemoryFile file(data + 1, size - 1);
    try {
        TiffSource source{InputFile(file.name())};
        usePages(source, data[0] % 2);
    } catch (const Failure&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
