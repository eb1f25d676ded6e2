// SPDX-License-Identifier: MIT
// A folder whose files are used with more rights than whoever may have planted something there.
//
// For administrators it lies where every user may create folders, so nothing in it is taken
// for the tool's own: owner, links and hard links of the folder and of each file are looked at,
// on the opened handle, before the file is read, written, moved or deleted. What is not to be
// trusted is moved aside, under a name that nobody reads, and what it leads to stays untouched.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "process/file_security.h"

namespace kora4::tools {

// Where the tools keep their own files: KORA4 in the machine's folder for program data when
// this process runs elevated, otherwise in the user's. Asked of the platform, because a user
// sets the environment. UTF-8.
std::string DataFolder(const FileSecurity& security = PlatformFileSecurity());

// What stands in the place of a file.
enum class Standing {
    eAbsent,
    eTrusted,
    eStrange,  // another user's, a link, a file with several names, or refused
};

// Paths and names are UTF-8; names have no folder.
class GuardedFolder {
  public:
    explicit GuardedFolder(std::string path,
                           const FileSecurity& security = PlatformFileSecurity())
        : m_path(std::move(path)), m_security(security) {}

    std::string PathOf(const std::string& name) const { return m_path + "\\" + name; }

    // Makes the folder with its list. One that is there and not to be trusted is moved aside
    // first; empty, or where it is now. Failure with eFailed when that is not possible.
    std::string Prepare() const;

    // Everything below is asked of a folder that may be absent. `file` is open for reading
    // when the file is trusted.
    Standing Find(const std::string& name, UniqueHandle* file = nullptr) const;
    // The whole content of a trusted file. Failure with eFailed when it cannot be read.
    std::string Read(const std::string& name) const;
    // Makes the file or replaces it in one step, through one with ".new" behind its name.
    // Prepares the folder. Failure with eFailed.
    void Write(const std::string& name, std::string_view content) const;
    // Deletes a trusted file, moves a strange one aside; an absent one is not an error.
    void Remove(const std::string& name) const;
    // Renames what stands there, and what it is called from then on, with its path. A strange
    // folder goes as a whole. Failure with eFailed.
    std::string MoveAside(const std::string& name) const;
    // The trusted files of which the name begins so, sorted.
    std::vector<std::string> Names(std::string_view begin) const;

  private:
    Standing FindFolder() const;

    std::string m_path;
    const FileSecurity& m_security;
};

}  // namespace kora4::tools
