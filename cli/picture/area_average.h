#pragma once

#include "picture/picture.h"

/// The picture, which is not bilevel, at another size: each component of a pixel is the mean, rounded, of the area that
/// the pixel covers, parts of pixels counted as such. The result is grey where the picture is, and RGB otherwise.
Picture averaged(const Picture& picture, Size target);
