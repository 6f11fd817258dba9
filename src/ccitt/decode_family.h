#pragma once

// The decoding tables of the class family, for the image class itself.

#include "ccitt/decode_tables.h"

namespace tilepress::g4 {

/// Null while the class family is not enabled.
const DecodeTables* classDecodeTables();

}  // namespace tilepress::g4
