#pragma once

#include <string_view>

/// One line on a terminal that says what goes on; nothing is written anywhere else.
class Progress {
public:
    explicit Progress(bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::string_view what);
    /// As show, with a percentage; cheap enough to call for every row.
    void show(std::string_view what, unsigned long long done, unsigned long long all);
    void clear();

private:
    const bool enabled_;
    bool shown_ = false;
    int lastPercent_ = -1;
};
