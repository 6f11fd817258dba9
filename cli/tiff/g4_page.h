#pragma once

// A page of Group 4 tiles in memory: what is wrong with it, and pictures of it.

#include "base/progress.h"
#include "picture/drawing.h"
#include "tiff/page_api.h"
#include "tiff/page_source.h"

#include <memory>
#include <string>
#include <vector>

/// One damaged tile, for a message.
std::string describe(const TiffPage& page, const tp_damage& damage);
/// Why a tile is damaged.
const char* reasonOf(const tp_damage& damage);

/// The coded bytes of the tiles that touch a rectangle of a page. Operations throw Failure.
class G4Page {
public:
    /// Refuses pages that are too large to decode, and those whose tiles claim more than the file holds.
    G4Page(PageSource& source, const TiffPage& page, const Rect& part, Progress& progress);
    /// All of the page.
    G4Page(PageSource& source, const TiffPage& page, Progress& progress);
    G4Page(const G4Page&) = delete;
    G4Page& operator=(const G4Page&) = delete;

    tp_page* get() const { return page_.get(); }
    const TiffPage& what() const { return what_; }
    std::uint64_t compressedBytes() const { return compressedBytes_; }

    /// Decodes every row: what is wrong with tiles as far as the rectangle goes, by tiles. There is no other judgement.
    std::vector<tp_damage> damage() const;
    /// For a message about the first, by rows, of several damages.
    std::string describeFirst(const std::vector<tp_damage>& damage) const;
    /// The page with ink and paper exchanged; it borrows this one's bytes.
    PageHandle negative();
    /// The name of file and page, to begin messages with.
    const std::string& name() const { return name_; }

private:
    void read(PageSource& source, Progress& progress);
    PageHandle open(bool negative, const std::vector<tp_coded>& tiles) const;
    bool reaches(const tp_damage& damage) const;

    const TiffPage what_;
    const Rect part_;
    const std::string name_;
    std::uint64_t compressedBytes_ = 0;
    std::unique_ptr<unsigned char[]> bytes_;
    std::vector<tp_coded> tiles_;
    std::vector<unsigned char> blank_;  ///< codes of a tile of paper, once there is need of them
    PageHandle page_;
};

/// The drawing's rectangle at its target size. With `salvage` damaged tiles are blank from the bad row on; without it
/// everything is from the first bad row on.
Picture drawPage(G4Page& page, const Drawing& drawing, bool damaged, bool salvage);
