// SPDX-License-Identifier: MIT
// The text form of numeric arrays and flag arrays.
//
// A numeric array is the scale, the element count and the elements; a flag array is the
// count and the flags. All are hexadecimal numbers separated by commas:
//     0100,0002,f400,0041        scale 256, two elements, -12.0 and 0.25390625
//     0003,1,0,1                 three flags
//
// Pure functions: no allocation, no lock, any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/patch_records.h"
#include "contract/result.h"

namespace kora4::codec {

// The capacity of every array in memory. A stored count may not be larger.
inline constexpr std::uint32_t cArrayCapacity = cMaxArrayElements;

// Scales that can be written are 1 to cScaleLimit - 1.
inline constexpr std::uint32_t cScaleLimit = 0x8000;

// The buffer in which an array's text is built, terminator included.
inline constexpr std::size_t cArrayTextChars = 1024;

// Characters that must be left before a piece of the text is begun.
inline constexpr std::size_t cArrayFieldRoom = 32;

// A token of this many characters or more is rejected.
inline constexpr std::size_t cTokenLimit = 255;

// Reads a zero-terminated text into 40 places. *pCount is the number of elements read, and the
// places after them are cleared; after a failure it is 0 and all are cleared. E_INVALIDARG for
// a null pCount or array; E_FAIL for a null or malformed text:
//  - a token is a run of characters other than white space (blank, \t \n \v \f \r) and
//    comma: hexadecimal digits of either case with an optional 0x or 0X before them, at
//    most 254 characters, of a value that fits 32 bits;
//  - white space around a token is skipped, and one comma after it, so a trailing comma
//    is accepted, a leading or doubled one is an empty token and refused;
//  - the count is at most 40, exactly that many elements follow, and then nothing but
//    white space.
// Numeric elements are below 0x10000, taken as signed 16-bit numbers and divided by the
// scale; a scale of 0 is refused. A flag is 1 when its number is not zero.
HRESULT DecodeNumericArray(const char16_t* pText, std::uint32_t* pCount, float* pElements);
HRESULT DecodeFlagArray(const char16_t* pText, std::uint32_t* pCount, std::uint32_t* pFlags);

// How a piece of an array's text is formatted.
enum class ArrayField : std::uint32_t {
    eFirst,  // "%04x"
    eWord,   // ",%04x"
    eFlag,   // ",%x"
};

// Appends one piece at *ppCursor, moves the cursor past it and lowers *pCharsAvail (the
// characters that may still be written, not counting the terminator). Writes no terminator.
// E_OUTOFMEMORY, and nothing is written, with fewer than cArrayFieldRoom characters left;
// E_FAIL for an unknown format.
HRESULT PutArrayField(char16_t** ppCursor, std::size_t* pCharsAvail, ArrayField field,
                      std::uint32_t value);

// Used instead of PutArrayField: the store passes one that traces each piece.
using ArrayFieldWriter = decltype(&PutArrayField);

// Builds the zero-terminated text. pElements and pFlags hold `count` entries and may be
// null when it is 0. E_OUTOFMEMORY when the text does not fit (from 198 elements or 495
// flags on), E_INVALIDARG for a scale of 0 or of cScaleLimit and above; the text is then
// empty. An element is multiplied by the scale, truncated toward zero to 64 bits and cut to
// the low 16; NaN and products of a magnitude of 2^63 and above store 0000. A flag is
// written as 0 or 1. A null `write` is PutArrayField.
HRESULT EncodeNumericArray(std::uint32_t scale, std::uint32_t count, const float* pElements,
                           char16_t (&text)[cArrayTextChars], ArrayFieldWriter write = nullptr);
HRESULT EncodeFlagArray(std::uint32_t count, const std::uint32_t* pFlags,
                        char16_t (&text)[cArrayTextChars], ArrayFieldWriter write = nullptr);

}  // namespace kora4::codec
