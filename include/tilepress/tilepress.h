#ifndef TILEPRESS_TILEPRESS_H
#define TILEPRESS_TILEPRESS_H

/// \file
/// Everything the library offers to C++ programs.

#include "tilepress/CImg.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg1G4.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "tilepress/ColorMap.h"
#include "tilepress/Export.h"
#include "tilepress/IImg.h"
#include "tilepress/ImgErr.h"
#include "tilepress/ImgHandle.h"
#include "tilepress/ImgRect.h"
#include "tilepress/Rothstein.h"
#include "tilepress/TileIterators.h"
#include "tilepress/ccitt.h"
#include "tilepress/support.h"

#endif
