#ifndef TILEPRESS_API_H
#define TILEPRESS_API_H

/// \file
/// Export macro, calling convention and the interface's integer types.

#include <limits.h>
#include <stdint.h>

/// \def TILEPRESS_API
/// Marks what the library exports. A program that links the library statically defines TILEPRESS_STATIC.
#if defined(_WIN32)
#  if defined(TILEPRESS_BUILD)
#    define TILEPRESS_API __declspec(dllexport)
#  elif defined(TILEPRESS_STATIC)
#    define TILEPRESS_API
#  else
#    define TILEPRESS_API __declspec(dllimport)
#  endif
#else
#  define TILEPRESS_API __attribute__((visibility("default")))
#endif

/// \def TILEPRESS_CALL
/// Calling convention of the plain functions.
#if defined(_WIN32) && !defined(_WIN64)
#  define TILEPRESS_CALL __cdecl
#else
#  define TILEPRESS_CALL
#endif

/// \def TILEPRESS_C_BEGIN
/// Begins declarations of C functions.
/// \def TILEPRESS_C_END
/// Ends them.
#ifdef __cplusplus
#  define TILEPRESS_C_BEGIN extern "C" {
#  define TILEPRESS_C_END }
#else
#  define TILEPRESS_C_BEGIN
#  define TILEPRESS_C_END
#endif

/// \def TILEPRESS_SLOTS_2
/// Microsoft compilers lay the overloads of one name out in reverse order of
/// declaration, the others in order: these put each overload in the slot that
/// its place in the list gives it.
/// \def TILEPRESS_SLOTS_3
/// As TILEPRESS_SLOTS_2, for three overloads.
#if defined(_MSC_VER) || defined(TILEPRESS_MSVC_ABI)
#  define TILEPRESS_SLOTS_2(a, b) b a
#  define TILEPRESS_SLOTS_3(a, b, c) c b a
#else
#  define TILEPRESS_SLOTS_2(a, b) a b
#  define TILEPRESS_SLOTS_3(a, b, c) a b c
#endif

/// \typedef ImgULong
/// The interface's 32-bit integer: `unsigned long` wherever that has 32 bits, which keeps the binary
/// interface of the Windows library.
/// \typedef ImgLong
/// The signed one: `long` wherever that has 32 bits.
#if ULONG_MAX == 0xFFFFFFFFUL
typedef unsigned long ImgULong;
typedef long ImgLong;
#else
typedef uint32_t ImgULong;
typedef int32_t ImgLong;
#endif

#ifdef __cplusplus
static_assert(sizeof(ImgULong) == 4 && sizeof(ImgLong) == 4, "the interface's integers have 32 bits");
#endif

#endif
