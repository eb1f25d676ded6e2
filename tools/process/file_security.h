// SPDX-License-Identifier: MIT
// Whose a file is, and whether it is a link: asked of the opened file, so that nothing can be
// exchanged between the question and the use.
#pragma once

#include <windows.h>

#include <string>

#include "platform/handles.h"

namespace kora4::tools {

// What the handle of a file or folder tells.
struct FileFacts {
    bool isFolder = false;
    bool isLink = false;           // a reparse point
    bool isElsewhere = false;      // a link that was followed, which only Wine does
    bool hasSeveralNames = false;  // hard links
    bool hasTrustedOwner = false;  // nobody but an administrator or this user made it
    bool isOpenToOthers = false;   // others may write it, or delete what is in it

    bool IsTrustedFile() const {
        return !isFolder && !isLink && !isElsewhere && !hasSeveralNames && hasTrustedOwner;
    }
    bool IsTrustedFolder() const {
        return isFolder && !isLink && !isElsewhere && hasTrustedOwner && !isOpenToOthers;
    }
};

// The platform's answers. Virtual because no test machine has several users and every kind of
// link: Wine knows one user, who is elevated, and makes hard links only.
class FileSecurity {
  public:
    virtual ~FileSecurity() = default;

    // Whether files are made for the machine, or for this user alone.
    virtual bool IsForMachine() const;
    // path: as it was opened, UTF-8.
    virtual FileFacts FactsOf(HANDLE file, const std::string& path) const;
    // The list of a new folder or file: administrators and the system write; everyone reads
    // what is the machine's, and only the user what is the user's. In SDDL.
    virtual std::wstring ListForNew() const;
};

// The platform as it is.
const FileSecurity& PlatformFileSecurity();

// Opens what stands at the path itself, be it a link or a folder. Null, with GetLastError set,
// when that is refused.
UniqueHandle OpenItself(const std::string& path, DWORD access, DWORD share);

}  // namespace kora4::tools
