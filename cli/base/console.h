#pragma once

// What the program says: reports on standard output, messages on standard error.

#include "base/failure.h"

#include <fmt/format.h>

#include <string>
#include <utility>

/// Prepares the standard streams, before anything is opened: a closed one stays unusable instead of being taken for the
/// first file, and a pipe that ends or a file that may not grow is an error like any other instead of a signal.
void prepareConsole();

/// The failure of standard output: there is no point in going on to the next file.
class ReportLost : public Failure {
public:
    explicit ReportLost(const std::string& message) : Failure(Exit::failed, message) {}
};

/// Writes to standard output. Throws ReportLost when that fails.
void printText(const std::string& text);
template <class... Values>
void print(fmt::format_string<Values...> format, Values&&... values) {
    printText(fmt::format(format, std::forward<Values>(values)...));
}

/// Writes a line to standard error, after what has been reported so far.
void remark(const std::string& line);
/// The same with the program's name before it.
void complain(const std::string& message);

/// Closes standard output. The code to end with: that of the command, unless something it said could not be written.
int endConsole(int code);
