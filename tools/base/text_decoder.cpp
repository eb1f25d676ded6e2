// SPDX-License-Identifier: MIT
// Recognises the byte order mark, and joins bytes to characters.
#include "base/text_decoder.h"

#include <utility>

#include "base/text.h"

namespace kora4::tools {
namespace {

constexpr std::string_view cUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view cLittleEndianMark = "\xFF\xFE";
constexpr std::string_view cBigEndianMark = "\xFE\xFF";

bool IsHighSurrogate(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

}  // namespace

// False: too few bytes to know.
bool TextDecoder::FindForm(bool isEnd) {
    if (m_form != Form::eUnknown)
        return true;
    const auto isMark = [this](std::string_view mark) { return m_bytes.starts_with(mark); };
    const auto mayBeMark = [this](std::string_view mark) { return mark.starts_with(m_bytes); };
    if (isMark(cLittleEndianMark) || isMark(cBigEndianMark)) {
        m_form = isMark(cBigEndianMark) ? Form::eBigEndian : Form::eLittleEndian;
        m_bytes.erase(0, cLittleEndianMark.size());
        return true;
    }
    if (!isEnd && !isMark(cUtf8Mark) &&
        (mayBeMark(cUtf8Mark) || mayBeMark(cLittleEndianMark) || mayBeMark(cBigEndianMark)))
        return false;
    m_form = Form::eUtf8;
    if (isMark(cUtf8Mark))
        m_bytes.erase(0, cUtf8Mark.size());
    return true;
}

std::string TextDecoder::Decoded() {
    if (m_form == Form::eUtf8)
        return std::exchange(m_bytes, {});
    std::wstring units;
    const std::size_t high = m_form == Form::eBigEndian ? 0 : 1;
    for (std::size_t i = 0; i + 1 < m_bytes.size(); i += 2)
        units += static_cast<wchar_t>(static_cast<unsigned char>(m_bytes[i + high]) << 8 |
                                      static_cast<unsigned char>(m_bytes[i + 1 - high]));
    if (!units.empty() && IsHighSurrogate(units.back()))
        units.pop_back();
    m_bytes.erase(0, units.size() * 2);
    return Narrow(units);
}

std::string TextDecoder::Take(std::string_view bytes) {
    m_bytes += bytes;
    return FindForm(false) ? Decoded() : std::string();
}

std::string TextDecoder::End() {
    FindForm(true);
    std::string text = Decoded();
    if (!m_bytes.empty())
        text += "\xEF\xBF\xBD";
    m_bytes.clear();
    return text;
}

std::string DecodedText(std::string_view bytes) {
    TextDecoder decoder;
    std::string text = decoder.Take(bytes);
    return text + decoder.End();
}

}  // namespace kora4::tools
