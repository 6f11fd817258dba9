#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A name for outputs in which places are filled in: {name} (the input's name without folder and ending), {ext} (its
/// ending), {dir} (its folder), {page}, and %d or %03d, which is the page too; %% is %. Other braces stay.
class OutputPattern {
public:
    explicit OutputPattern(const std::string& text);

    /// Whether pages of one input get names of their own.
    bool namesPages() const { return namesPages_; }
    std::string expanded(const std::string& input, unsigned page) const;

private:
    struct Part {
        enum class Kind { text, name, ending, folder, page } kind = Kind::text;
        std::string text;  ///< or, of a page, the format of its number
    };
    std::size_t addPlace(std::string_view rest);
    void addText(std::string_view text);

    std::vector<Part> parts_;
    bool namesPages_ = false;
};
