// SPDX-License-Identifier: MIT
// The equalizer in a file, as the text that equalizer programs exchange.
#ifndef KORA4_PANEL_WORKER_EQUALIZER_FILE_H
#define KORA4_PANEL_WORKER_EQUALIZER_FILE_H

#include <kora4.hpp>

#include <string>

namespace panel {

// What came of a file: S_OK, or why it was not to be; with `problem` in UTF-8, short and in one
// line, when it is about what the text says.
struct FileResult {
    HRESULT code = S_OK;
    std::string problem;
};

// Reads the file and gives `bands` the gains that its curve has at their frequencies. Where the
// bands have no frequencies, they become those of the file.
FileResult ImportEqualizer(const std::wstring& path, kora4::Bands& bands);
// Writes nothing that could not be imported again.
FileResult ExportEqualizer(const std::wstring& path, const kora4::Bands& bands);

}  // namespace panel

#endif  // KORA4_PANEL_WORKER_EQUALIZER_FILE_H
