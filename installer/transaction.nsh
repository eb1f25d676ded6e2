; SPDX-License-Identifier: MIT
; What setup and removal share: log, refusals, the tool that registers, and files that are exchanged
; all or not at all. Included once for each, because the compiler keeps their functions apart by
; the prefix "un.".
;
; Files are moved, never overwritten: Windows lets a library that programs have loaded be renamed,
; but not be written or deleted. A run works in the folder $work beside the installed files:
;   $work\new          what is to come, complete before anything changes
;   $work\old          what was there
;   $work\new.txt      what is to come, in each line a path that begins with a backslash
;   $work\before.txt   the same of the installation that was there
; Where a file is says whether it has been moved, so going back needs no other journal. The name of
; the folder is used once: a deletion that waits for the restart never meets what came later.

!include LogicLib.nsh
!include FileFunc.nsh
!include WinVer.nsh

; Exit codes: where Windows has a number for it, it is that one, so that deployment tools know it.
!define EXIT_NOT_ADMIN 740
!define EXIT_OLD_SYSTEM 1150
!define EXIT_CANCELLED 1602
!define EXIT_FAILED 1603
!define EXIT_NOT_INSTALLED 1605
!define EXIT_BUSY 1618
!define EXIT_LOG 1622
!define EXIT_HALF_WAY 1627
!define EXIT_OTHER_PRODUCT 1638
!define EXIT_COMMAND_LINE 1639
!define EXIT_RESTART 3010

!define LOCALE_INVARIANT 0x7F
!define FILE_ATTRIBUTE_HIDDEN 2
!define FILE_FLAG_DELETE_ON_CLOSE 0x04000000
!define GENERIC_WRITE 0x40000000
!define CREATE_ALWAYS 2
!define INVALID_HANDLE_VALUE -1
!define ERROR_SHARING_VIOLATION 32
!define INVALID_FILE_ATTRIBUTES -1
!define ERROR_FILE_NOT_FOUND 2
!define HKEY_LOCAL_MACHINE 0x80000002
!define KEY_READ 0x20019

Var log         ; its handle; empty: there is none
Var logFile
Var wanted      ; what /FEATURES says
Var removes     ; not empty: with /UNINSTALL
Var unknown     ; not empty: no switch
Var code        ; of a failure
Var failure     ; why it fails, in sentences; empty: it does not
Var reason
Var left        ; what could not be put back, in sentences
Var work
Var top         ; the folder in which the folders of this run were made; empty: none was
Var registered  ; the library that was registered before; empty: none
Var hadStore    ; 1: there were settings or backups before
Var touched     ; not empty: the registration may have changed; "settings": the settings, too
Var settings    ; not empty: the settings go, too
Var users       ; the programs that keep the old library until they end, a line each
Var list
Var from
Var to

; The function of setup or of removal.
!macro CallOwn name
!ifdef __UNINSTALL__
  Call un.${name}
!else
  Call ${name}
!endif
!macroend

; The folders of this run and of those that were killed.
!macro RemoveWorkFolders flags
  FindFirst $0 $1 "$INSTDIR\.setup-*"
  ${DoWhile} $1 != ""
    RMDir /r ${flags} "$INSTDIR\$1"
    FindNext $0 $1
  ${Loop}
  FindClose $0
!macroend

; Ends, before anything is changed, with a reason in one sentence.
!macro Refuse code text
  Push "${text}"
  !insertmacro CallOwn Log
  SetErrorLevel ${code}
  MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
  Quit
!macroend

; What the code of an error means.
!macro SystemMessage code text
  System::Call 'kernel32::FormatMessageW(i 0x12FF, p 0, i ${code}, i 0, w .r${text}, i 512, p 0)'
!macroend

!macro Move list from to
  StrCpy $list "${list}"
  StrCpy $from "${from}"
  StrCpy $to "${to}"
  !insertmacro CallOwn MoveFiles
!macroend

!macro TRANSACTION un

; Push TEXT: into the log and the window.
Function ${un}Log
  Exch $0
  Push $1
  Push $2
  DetailPrint $0
  ${If} $log != ""
    System::Call 'kernel32::GetSystemTime(@ r1)'
    System::Call 'kernel32::GetDateFormatW(i ${LOCALE_INVARIANT}, i 0, p r1, w "yyyy-MM-dd", w .r2, i 16)'
    FileWriteUTF16LE $log "$2T"
    System::Call 'kernel32::GetTimeFormatW(i ${LOCALE_INVARIANT}, i 0, p r1, w "HH:mm:ss", w .r2, i 16)'
    FileWriteUTF16LE $log "$2Z  $0$\r$\n"
  ${EndIf}
  Pop $2
  Pop $1
  Pop $0
FunctionEnd

; The switches, in any case. The platform has taken /D and _?= off the end.
Function ${un}ReadCommandLine
  StrCpy $0 $CMDLINE
  System::Call 'shell32::CommandLineToArgvW(w r0, *i .r1) p.r2'
  IntOp $1 $1 - 1
  ${For} $3 1 $1
    IntOp $4 $3 * 8
    IntPtrOp $4 $2 + $4
    System::Call '*$4(w .r0)'
    StrCpy $4 $0 5
    StrCpy $5 $0 10
    ${If} $0 == "/S"
      SetSilent silent
    ${ElseIf} $0 == "/UNINSTALL"
      SetSilent silent
      StrCpy $removes 1
    ${ElseIf} $0 == "/REMOVESETTINGS"
      StrCpy $settings 1
    ${ElseIf} $4 == "/LOG="
      StrCpy $logFile $0 "" 5
    ${ElseIf} $5 == "/FEATURES="
      StrCpy $wanted $0 "" 10
    ${ElseIf} $0 != "/NCRC"
      StrCpy $unknown $0
    ${EndIf}
  ${Next}
  System::Call 'kernel32::LocalFree(p r2)'
FunctionEnd

; The log is appended to. Only administrators write in its folder.
Function ${un}OpenLog
  StrCpy $0 $logFile
  ${If} $logFile == ""
    StrCpy $logFile "$WINDIR\Logs\KORA4\setup.log"
    CreateDirectory "$WINDIR\Logs\KORA4"
  ${EndIf}
  ClearErrors
  FileOpen $log $logFile a
  ${If} ${Errors}
    StrCpy $log ""
    ${If} $0 != ""
      !insertmacro Refuse ${EXIT_LOG} "The log $logFile cannot be written: name a file in a folder that exists."
    ${EndIf}
  ${Else}
    FileSeek $log 0 END $0
    ${If} $0 = 0
      FileWriteWord $log 0xFEFF
    ${EndIf}
  ${EndIf}
FunctionEnd

; What must hold before anything is done; the same for both.
Function ${un}CheckMachine
  ${IfNot} ${AtLeastWin10}
    !insertmacro Refuse ${EXIT_OLD_SYSTEM} "KORA4 ASL needs 64-bit Windows 10 or Windows Server 2016, or later."
  ${EndIf}
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    !insertmacro Refuse ${EXIT_NOT_ADMIN} "KORA4 ASL is installed and removed by administrators: start this program as an administrator."
  ${EndIf}
  ; A mutex could be held by any user. Before the log, which the other one may hold.
  CreateDirectory "$WINDIR\Logs\KORA4"
  System::Call 'kernel32::CreateFileW(w "$WINDIR\Logs\KORA4\setup.lock", i ${GENERIC_WRITE}, i 0, p 0, i ${CREATE_ALWAYS}, i ${FILE_FLAG_DELETE_ON_CLOSE}, p 0) p.r0 ?e'
  Pop $1
  ${If} $0 = ${INVALID_HANDLE_VALUE}
    ${If} $1 = ${ERROR_SHARING_VIOLATION}
      !insertmacro Refuse ${EXIT_BUSY} "KORA4 ASL is being installed or removed by another program, which holds $WINDIR\Logs\KORA4\setup.lock: wait for its end."
    ${EndIf}
    !insertmacro Refuse ${EXIT_LOG} "$WINDIR\Logs\KORA4\setup.lock cannot be written (error $1)."
  ${EndIf}
  Call ${un}OpenLog
  ${If} $unknown != ""
    !insertmacro Refuse ${EXIT_COMMAND_LINE} "There is no switch '$unknown': /S, /FEATURES=, /LOG=, /UNINSTALL, /REMOVESETTINGS, and last /D=."
  ${EndIf}
FunctionEnd

; A removal without the list would remove nothing.
Function ${un}RequireList
  ${IfNot} ${FileExists} "$INSTDIR\files.txt"
    !insertmacro Refuse ${EXIT_FAILED} "$INSTDIR has no files.txt, which says what was installed: run the setup again, then remove."
  ${EndIf}
FunctionEnd

; What is there, a folder for this run, and the tool that registers.
Function ${un}Begin
  InitPluginsDir
  ReadRegStr $registered HKLM "${SERVER_KEY}" ""
  StrCpy $hadStore 1
  System::Call 'advapi32::RegOpenKeyExW(p ${HKEY_LOCAL_MACHINE}, w "${STORE_KEY}", i 0, i ${KEY_READ}, *p .r1) i.r0'
  SetShellVarContext all
  ${If} $0 = ${ERROR_FILE_NOT_FOUND}
  ${AndIfNot} ${FileExists} "$APPDATA\KORA4\*.*"
    StrCpy $hadStore ""
  ${EndIf}
  ${If} $0 = 0
    System::Call 'advapi32::RegCloseKey(p r1)'
  ${EndIf}
  System::Call 'kernel32::GetTickCount() i.r0'
  IntFmt $0 "%08x" $0
  StrCpy $work "$INSTDIR\.setup-$0"
  Call ${un}MakeFolder
  ${If} $failure != ""
    Return
  ${EndIf}
  ClearErrors
  CreateDirectory "$work\old"
  ${If} ${Errors}
    StrCpy $failure "The folder $work cannot be created."
    Return
  ${EndIf}
  System::Call 'kernel32::SetFileAttributesW(w "$work", i ${FILE_ATTRIBUTE_HIDDEN})'
  ; Here, because users may be able to write in the folder for temporary files.
  File "/oname=$work\kora4ctl.exe" "${TREE}/bin/kora4ctl.exe"
  ${If} ${Errors}
    StrCpy $failure "$work\kora4ctl.exe cannot be written."
    Return
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\files.txt"
    CopyFiles /SILENT "$INSTDIR\files.txt" "$work\before.txt"
    ${If} ${Errors}
      StrCpy $failure "$INSTDIR\files.txt, which says what was installed, cannot be read."
    ${EndIf}
  ${EndIf}
FunctionEnd

; The folder of the installation, with each above it that is missing. A folder that users can write, or
; rename, would let them replace the library.
Function ${un}MakeFolder
  StrCpy $1 $INSTDIR
  ${Do}
    ; With the backslash: a file is no folder, and a drive is its root.
    System::Call 'kernel32::GetFileAttributesW(w "$1\") i.r0'
    ${If} $0 <> ${INVALID_FILE_ATTRIBUTES}
      ${Break}
    ${EndIf}
    ${GetParent} $1 $1
  ${LoopUntil} $1 == ""
  ${If} $1 == ""
    StrCpy $failure "The folder $INSTDIR cannot be created: its drive is not there."
    Return
  ${ElseIf} $1 == $INSTDIR
    Return
  ${EndIf}
  StrCpy $top $1
  ; The system and administrators everything; users, and programs from the store, reading.
  System::Call 'advapi32::ConvertStringSecurityDescriptorToSecurityDescriptorW(w "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200A9;;;S-1-5-32-545)(A;OICI;0x1200A9;;;S-1-15-2-1)", i 1, *p .r5, p 0) i.r0 ?e'
  Pop $3
  ; nLength, padding, the descriptor, bInheritHandle, padding
  System::Call '*(i 24, i 0, p r5, i 0, i 0) p .r6'
  ${DoUntil} $1 == $INSTDIR
    ${If} $0 = 0
      ${Break}
    ${EndIf}
    StrLen $2 "$1\"
    StrCpy $2 $INSTDIR "" $2
    ${WordFind} "$2\" "\" "+1" $2
    StrCpy $1 "$1\$2"
    System::Call 'kernel32::CreateDirectoryW(w r1, p r6) i.r0 ?e'
    Pop $3
  ${Loop}
  ${If} $0 = 0
    !insertmacro SystemMessage r3 4
    StrCpy $failure "The folder $1 cannot be created: $4(error $3)"
  ${EndIf}
  System::Free $6
  System::Call 'kernel32::LocalFree(p r5)'
FunctionEnd

; Push ARGUMENTS: runs kora4ctl; $0 is its exit code, or a word if it cannot be started: compare it as
; text. $1 is what it printed. Both are in the log.
Function ${un}RunTool
  Pop $1
  Push "kora4ctl $1"
  Call ${un}Log
  nsExec::ExecToStack '"$work\kora4ctl.exe" $1'
  Pop $0
  Pop $1
  Push "$1(exit code $0)"
  Call ${un}Log
FunctionEnd

; Moves each file of $list from the folder $from to the folder $to. What is not there is left out,
; and so is what the other folder has. Sets $failure if one cannot be moved; the others are. A first
; installation has no list of what was there, a removal none of what is to come.
Function ${un}MoveFiles
  ${IfNot} ${FileExists} $list
    Return
  ${EndIf}
  ClearErrors
  FileOpen $0 $list r
  ${If} ${Errors}
    StrCpy $failure "$list cannot be read."
    Return
  ${EndIf}
  ${Do}
    FileRead $0 $1
    ${If} ${Errors}
      ${Break}
    ${EndIf}
    StrCpy $1 $1 -2
    ${If} ${FileExists} "$from$1"
    ${AndIfNot} ${FileExists} "$to$1"
      ${GetParent} "$to$1" $2
      CreateDirectory $2
      System::Call 'kernel32::MoveFileExW(w "$from$1", w "$to$1", i 0) i.r2 ?e'
      Pop $3
      ${If} $2 = 0
        !insertmacro SystemMessage r3 4
        StrCpy $failure "$from$1 cannot be moved to $to: $4(error $3)"
      ${EndIf}
    ${EndIf}
    ClearErrors
  ${Loop}
  FileClose $0
  ClearErrors
FunctionEnd

; Removes the folders of the files of $list that are empty.
Function ${un}RemoveEmptyFolders
  ClearErrors
  FileOpen $0 $list r
  ${If} ${Errors}
    Return
  ${EndIf}
  ${Do}
    FileRead $0 $1
    ${If} ${Errors}
      ${Break}
    ${EndIf}
    StrCpy $1 $1 -2
    ${GetParent} "$INSTDIR$1" $2
    ${DoWhile} $2 != $INSTDIR
      ; Refused while something is in it.
      RMDir $2
      ${GetParent} $2 $2
    ${Loop}
    ClearErrors
  ${Loop}
  FileClose $0
  ClearErrors
FunctionEnd

; Puts the new files in place of the old ones.
Function ${un}Exchange
  !insertmacro Move "$work\before.txt" "$INSTDIR" "$work\old"
  ; What lies there and belongs to no installation.
  !insertmacro Move "$work\new.txt" "$INSTDIR" "$work\old"
  ${If} $failure == ""
    !insertmacro Move "$work\new.txt" "$work\new" "$INSTDIR"
  ${EndIf}
FunctionEnd

; Puts everything back: files; and, if registering or unregistering was begun, the registration, and the
; store if there was none.
Function ${un}RollBack
  Push "Failed: $failure"
  Call ${un}Log
  StrCpy $reason $failure
  StrCpy $failure ""
  SetOutPath $PLUGINSDIR
  ${If} $touched != ""
  ${AndIf} $registered == ""
    StrCpy $0 'unregister --only "$INSTDIR\bin\QXA64T.dll"'
    ${If} $hadStore == ""
      StrCpy $0 "$0 --settings"
    ${EndIf}
    Push $0
    Call ${un}RunTool
    ${If} $0 != 0
      StrCpy $left " The library is still registered: $1"
    ${EndIf}
  ${EndIf}
  !insertmacro Move "$work\new.txt" "$INSTDIR" "$work\new"
  !insertmacro Move "$work\before.txt" "$work\old" "$INSTDIR"
  !insertmacro Move "$work\new.txt" "$work\old" "$INSTDIR"
  ${If} $failure != ""
    StrCpy $left "$left What was installed is in $work\old: $failure"
  ${EndIf}
  ${If} $touched != ""
  ${AndIf} $registered != ""
    Push 'register "$registered"'
    Call ${un}RunTool
    ${If} $0 != 0
      StrCpy $left "$left The library that was registered, $registered, cannot be registered again: $1"
    ${EndIf}
  ${EndIf}
  ${If} $touched == "settings"
    StrCpy $left "$left Settings may be gone."
  ${EndIf}
  StrCpy $list "$work\new.txt"
  Call ${un}RemoveEmptyFolders
  ${If} $failure == ""
    RMDir /r $work
  ${EndIf}
  Call ${un}RemoveRoot
  StrCpy $code ${EXIT_FAILED}
  ${If} $left != ""
    StrCpy $code ${EXIT_HALF_WAY}
    StrCpy $failure "$reason Not everything could be put back.$left"
  ${ElseIf} $touched != ""
    StrCpy $failure "$reason Everything was put back; set narrower access lists of the settings again."
  ${Else}
    StrCpy $failure "$reason Nothing was changed."
  ${EndIf}
  Push $failure
  Call ${un}Log
  SetErrorLevel $code
  MessageBox MB_OK|MB_ICONSTOP "$failure$\n$\nThe log is $logFile" /SD IDOK
FunctionEnd

; The folder of the installation if it is empty, and what is empty above it: what this run has made, and
; that of this vendor.
Function ${un}RemoveRoot
  RMDir $INSTDIR
  ${If} $top != ""
    StrCpy $1 $INSTDIR
    ${DoUntil} $1 == $top
      RMDir $1
      ${GetParent} $1 $1
    ${Loop}
  ${EndIf}
  RMDir "$PROGRAMFILES64\Velto"
  ClearErrors
FunctionEnd

; Deletes the old files, those in use at the next restart, and the folders that are empty now.
Function ${un}Commit
  SetOutPath $PLUGINSDIR
  Delete "$work\old\bin\QXA64T.dll"
  ${If} ${FileExists} "$work\old\bin\QXA64T.dll"
    Push 'register --in-use "$INSTDIR\bin\QXA64T.dll"'
    Call ${un}RunTool
    StrCpy $users $1
  ${EndIf}
  StrCpy $list "$work\before.txt"
  Call ${un}RemoveEmptyFolders
  RMDir /r /REBOOTOK $work
  ; What is in use there waits for the restart already, or for the next run.
  !insertmacro RemoveWorkFolders ""
  ClearErrors
FunctionEnd

; Removal as a whole; $settings not empty: with the settings.
Function ${un}RemoveProduct
  Call ${un}Begin
  Push "Removing what is installed in $INSTDIR"
  Call ${un}Log
  ${If} $failure == ""
  ${AndIfNot} ${FileExists} "$work\before.txt"
    StrCpy $failure "$INSTDIR\files.txt, which says what was installed, is missing."
  ${EndIf}
  ${If} $failure == ""
    Call ${un}Exchange
  ${EndIf}
  ${If} $failure == ""
    Call ${un}Unregister
  ${EndIf}
  ${If} $failure != ""
    Call ${un}RollBack
    Abort
  ${EndIf}
  DeleteRegKey HKLM "${PRODUCT_KEY}"
  SetShellVarContext all
  Delete "${SHORTCUT}"
  Call ${un}Commit
  SetErrorLevel 0
  ${If} ${FileExists} "$INSTDIR\.setup-*"
    ; There is no next run.
    !insertmacro RemoveWorkFolders /REBOOTOK
    SetRebootFlag true
  ${EndIf}
  ${If} ${RebootFlag}
    RMDir /REBOOTOK $INSTDIR
    SetErrorLevel ${EXIT_RESTART}
    Push "Programs still have files open that were removed; these go at the next restart. $users"
    Call ${un}Log
  ${EndIf}
  Call ${un}RemoveRoot
  Push "${PRODUCT} is removed."
  Call ${un}Log
FunctionEnd

; Leaves a registration alone that leads elsewhere by now, with its settings.
Function ${un}Unregister
  StrCpy $touched "registration"
  StrCpy $2 'unregister --only "$INSTDIR\bin\QXA64T.dll"'
  Push '$2 "$work\old\bin\QXA64T.dll"'
  Call ${un}RunTool
  ${If} $0 != 0
    ; Without the library, which is missing or damaged.
    Push $2
    Call ${un}RunTool
  ${EndIf}
  ${If} $0 != 0
    StrCpy $failure "The registration cannot be removed: $1"
  ${ElseIf} $settings != ""
    StrCpy $touched "settings"
    Push "$2 --settings"
    Call ${un}RunTool
    ${If} $0 != 0
      StrCpy $failure "The settings cannot be removed: $1"
    ${EndIf}
  ${EndIf}
FunctionEnd

!macroend
