// SPDX-License-Identifier: MIT
// docs/store-schema.md: texts, bounds and the visualization blob.
#ifndef KORA4_TESTS_CHECKS_DOCUMENTS_SCHEMA_TEXTS_H
#define KORA4_TESTS_CHECKS_DOCUMENTS_SCHEMA_TEXTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "checks/documents_compare.h"

namespace kora4::test {

// What a text decodes to: "1, 2, 3" or, of equal elements, "20 x 0.00"; levels (scale 256)
// with two decimals.
std::string DecodedArray(const std::u16string& text, std::uint32_t scale);
std::string DecodedFlags(const std::u16string& text);

std::vector<Row> WrittenTexts(const Document& document);
std::vector<Row> ReadTexts(const Document& document);
std::vector<Row> Bounds(const Document& document);
std::vector<Row> BlobHead(const Document& document);
std::vector<Row> BlobRecord(const Document& document);
std::vector<Row> BlobValues(const Document& document);
std::vector<Row> DisplayLevels(const Document& document);

}  // namespace kora4::test

#endif  // KORA4_TESTS_CHECKS_DOCUMENTS_SCHEMA_TEXTS_H
