// SPDX-License-Identifier: MIT
// A scene: what the engine is, what it hears and what happens to it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "contract/property_key.h"
#include "kora4sim/engine/faults.h"
#include "kora4sim/engine/processing.h"
#include "kora4sim/signal/spectra.h"

namespace kora4::tools::sim {

inline constexpr char cSceneFormat[] = "kora4sim-scene";
inline constexpr int cSceneVersion = 1;
inline constexpr char cDefaultScene[] = "music";

// A companion application: its name in a scene, and where the store has its command line.
struct CommandDef {
    const char* name;
    std::uint32_t pid;
};

inline constexpr CommandDef cCommands[] = {
    {"profile-editor", pkey::cProfileEditorCommandPid},
    {"profile-selector", pkey::cProfileSelectorCommandPid},
    {"demo-app", pkey::cDemoAppCommandPid},
};

// Command lines of the companion applications by their names; an engine may have some or none.
using Commands = std::map<std::string, std::string>;

// A scene file as read and checked.
struct Scene {
    std::string name;  // of the file, without its ending
    std::string description;
    std::uint32_t mask = 0;
    // None: the stored ones stay.
    std::optional<Commands> commands;
    std::vector<RecordShape> records;
    Spectrum spectrum;
    // The gains are made from the settings; otherwise they are 0.
    bool followsSettings = true;
    std::vector<Fault> timeline;  // earliest first
};

// Reads the text of a scene file. Failure with eBadInput names the place in the file.
Scene ReadScene(std::string_view text, const std::string& file);

// The scenes beside the program.
class SceneFolder {
  public:
    // Where the program is.
    SceneFolder();
    explicit SceneFolder(std::string path) : m_path(std::move(path)) {}

    const std::string& Path() const { return m_path; }
    // Sorted.
    std::vector<std::string> Names() const;
    // A name, or the path of a file (whatever has a separator or ends in .json). Failure with
    // eBadInput when there is none, or the file is not a scene.
    Scene Load(std::string_view nameOrPath) const;

  private:
    std::string m_path;
};

}  // namespace kora4::tools::sim
