// SPDX-License-Identifier: MIT
// Texts from outside, in the forms in which programs and shells write them.
#pragma once

#include <string>
#include <string_view>

namespace kora4::tools {

// Makes UTF-8 of bytes that come piece by piece: UTF-8 with or without a byte order mark,
// UTF-16 in either order with one. The mark itself is left out.
class TextDecoder {
  public:
    // What the bytes so far make; characters that are not complete stay for the next call.
    std::string Take(std::string_view bytes);
    // What is left at the end; half a character of UTF-16 is U+FFFD.
    std::string End();

  private:
    enum class Form { eUnknown, eUtf8, eLittleEndian, eBigEndian };

    bool FindForm(bool isEnd);
    std::string Decoded();

    Form m_form = Form::eUnknown;
    std::string m_bytes;
};

// The whole of a text.
std::string DecodedText(std::string_view bytes);

}  // namespace kora4::tools
