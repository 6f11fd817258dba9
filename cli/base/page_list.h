#pragma once

#include <string>
#include <utility>
#include <vector>

/// Pages as the command line names them: numbers from 1, ranges, "last" and "all", with commas between: 1-3,7,last.
class PageList {
public:
    /// Throws Failure when the text is no such list.
    explicit PageList(const std::string& text);

    /// The pages of a file that has `count`, in the order of the list, none twice. Throws Failure for one that the file
    /// does not have.
    std::vector<unsigned> of(unsigned count) const;
    /// The page of a list that is one number, else 0.
    unsigned onlyPage() const;
    /// The list again.
    const std::string& text() const { return text_; }

private:
    std::string text_;
    std::vector<std::pair<unsigned, unsigned>> ranges_;  ///< first and last, which kLast stands for the file's last in
};
