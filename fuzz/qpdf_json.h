#pragma once

// In place of libqpdf's header of that name, which clang 14 refuses in C++20: it destroys a vector of what is not yet
// complete. Nothing here needs more than the name.

#define JSON_HH
class JSON;
