#pragma once

// The decoding tables of the families, for the image class and for compressed handles.

#include "ccitt/decode_tables.h"

namespace tilepress::g4 {

// Null while the family is not enabled.
const DecodeTables* classDecodeTables();
const DecodeTables* plainDecodeTables();

}  // namespace tilepress::g4
