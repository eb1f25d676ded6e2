; SPDX-License-Identifier: MIT
; The installer for people and for deployment tools; docs/deployment.md says what it promises.
; installer/make.sh calls the compiler with -DVERSION -DTREE -DOUT -DLISTS -DSERVER_KEY -DSTORE_KEY
; -DUPGRADE_CODE.
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
ManifestSupportedOS Win10
RequestExecutionLevel admin
!ifdef SIGN
!uninstfinalize '"${SIGN}" "%1"' = 0
!endif
AllowSkipFiles off
; A file that cannot be written sets the error flag instead of asking.
SetOverwrite try

!define PRODUCT "KORA4 ASL"
!define PUBLISHER "Velto"
!define PRODUCT_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${PUBLISHER} ${PRODUCT}"
!define SHORTCUT "$SMPROGRAMS\KORA4 Panel.lnk"

Name "${PRODUCT} ${VERSION}"
Caption "${PRODUCT} ${VERSION}"
BrandingText "${PUBLISHER} ${PRODUCT} ${VERSION}"
OutFile "${OUT}"
InstallDir "$PROGRAMFILES64\Velto\KORA4"
VIProductVersion "${VERSION}"
VIAddVersionKey ProductName "${PRODUCT}"
VIAddVersionKey CompanyName "${PUBLISHER}"
VIAddVersionKey FileDescription "${PRODUCT} setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey LegalCopyright "MIT licence"

!include MUI2.nsh
!include Sections.nsh
!include WordFunc.nsh
!include transaction.nsh
; The macros Files_library, Files_tools, Files_panel and Files_sdk; HAVE_PANEL if there is one.
!include "${LISTS}"

Var before    ; the version that is installed; empty: none
Var features  ; what is selected, as /FEATURES takes it
Var words     ; for the first and the last page

; --- pages ------------------------------------------------------------------------------------

!define MUI_ABORTWARNING
!define MUI_CUSTOMFUNCTION_ABORT Cancelled
!define MUI_WELCOMEPAGE_TEXT "$words"
!define MUI_COMPONENTSPAGE_SMALLDESC
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipIfInstalled
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_NOREBOOTSUPPORT
!define MUI_FINISHPAGE_TEXT "$words"
!insertmacro MUI_PAGE_FINISH

!define MUI_COMPONENTSPAGE_TEXT_TOP "The settings stay unless you select them. Programs that use the library should be closed."
!insertmacro MUI_UNPAGE_COMPONENTS
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

!insertmacro TRANSACTION ""
!insertmacro TRANSACTION "un."

; --- installation -----------------------------------------------------------------------------

; Unpacks a file beside what is installed, and enters it in the list.
!macro Stage folder name
  ${If} $failure == ""
    SetOutPath "$work\new${folder}"
    ClearErrors
    File "${TREE}${folder}\${name}"
    FileWrite $list "${folder}\${name}$\r$\n"
    ${If} ${Errors}
      StrCpy $failure "$work\new${folder}\${name} cannot be written."
    ${EndIf}
  ${EndIf}
!macroend

Section "-Begin" SecBegin
  Call Begin
  ${If} $before == ""
    Push "Installing ${VERSION} in $INSTDIR"
  ${Else}
    Push "Installing ${VERSION} in $INSTDIR, over $before ($features)"
    ${IfNot} ${FileExists} "$INSTDIR\files.txt"
      Push "files.txt is missing: files of $before that ${VERSION} lacks stay."
      Call Log
    ${EndIf}
  ${EndIf}
  Call Log
  StrCpy $features "library"
  ClearErrors
  FileOpen $list "$work\new.txt" w
  ${If} ${Errors}
  ${AndIf} $failure == ""
    StrCpy $failure "$work\new.txt cannot be written."
  ${EndIf}
SectionEnd

Section "Library" SecLibrary
  SectionIn RO
  !insertmacro Files_library
SectionEnd

Section "Tools" SecTools
  !insertmacro Files_tools
  StrCpy $features "$features,tools"
SectionEnd

!ifdef HAVE_PANEL
Section "Control panel" SecPanel
  !insertmacro Files_panel
  StrCpy $features "$features,panel"
SectionEnd
!endif

Section /o "SDK" SecSdk
  !insertmacro Files_sdk
  StrCpy $features "$features,sdk"
SectionEnd

Section "-Finish" SecFinish
  ${If} $failure == ""
    ClearErrors
    SetOutPath "$work\new"
    WriteUninstaller "$work\new\uninstall.exe"
    FileWrite $list "\uninstall.exe$\r$\n\files.txt$\r$\n"
    FileClose $list
    CopyFiles /SILENT "$work\new.txt" "$work\new\files.txt"
    ${If} ${Errors}
      StrCpy $failure "$work\new\uninstall.exe cannot be written."
    ${EndIf}
  ${Else}
    FileClose $list
  ${EndIf}
  SetOutPath $TEMP
  ${If} $failure == ""
    Call Exchange
  ${EndIf}
  ${If} $failure == ""
    StrCpy $touched "registration"
    Push 'register --app-keys "$INSTDIR\bin\QXA64T.dll"'
    Call RunTool
    ${If} $0 != 0
      StrCpy $failure "The library cannot be registered: $1"
    ${EndIf}
  ${EndIf}
  ${If} $failure == ""
    Call WriteProduct
  ${EndIf}
  ${If} $failure != ""
    Call RollBack
    Abort
  ${EndIf}
  Call Commit
  Call WriteShortcut
  Call SayWhatWasDone
SectionEnd

; With /UNINSTALL, in place of the others. The setup does it as the installed program does, but is
; waited for, and its exit code is that of the removal.
Section /o "-Remove" SecRemove
  Call RemoveProduct
SectionEnd

; The entry in the list of installed programs, by which this installation is found again.
Function WriteProduct
  ClearErrors
  WriteRegStr HKLM "${PRODUCT_KEY}" DisplayName "${PRODUCT}"
  WriteRegStr HKLM "${PRODUCT_KEY}" DisplayVersion "${VERSION}"
  WriteRegStr HKLM "${PRODUCT_KEY}" Publisher "${PUBLISHER}"
  WriteRegStr HKLM "${PRODUCT_KEY}" DisplayIcon "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${PRODUCT_KEY}" InstallLocation "$INSTDIR"
  WriteRegStr HKLM "${PRODUCT_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${PRODUCT_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
  WriteRegStr HKLM "${PRODUCT_KEY}" Features $features
  WriteRegDWORD HKLM "${PRODUCT_KEY}" NoModify 1
  WriteRegDWORD HKLM "${PRODUCT_KEY}" NoRepair 1
  ${If} ${Errors}
    StrCpy $failure "The entry in the list of installed programs cannot be written."
    ${If} $before == ""
      DeleteRegKey HKLM "${PRODUCT_KEY}"
    ${EndIf}
  ${EndIf}
FunctionEnd

Function WriteShortcut
  SetShellVarContext all
  ${If} ${FileExists} "$INSTDIR\bin\KORA4Panel.exe"
    SetOutPath "$INSTDIR\bin"
    CreateShortcut "${SHORTCUT}" "$INSTDIR\bin\KORA4Panel.exe"
    SetOutPath $TEMP
  ${Else}
    Delete "${SHORTCUT}"
  ${EndIf}
FunctionEnd

Function SayWhatWasDone
  StrCpy $words "${PRODUCT} ${VERSION} is installed and registered. The settings are what they were."
  SetErrorLevel 0
  ${If} ${RebootFlag}
    SetErrorLevel ${EXIT_RESTART}
    StrCpy $words "$words$\n$\nPrograms have replaced files still open. They use the new version after their next start; the old files go at the next restart of Windows."
    ${If} $users != ""
      StrCpy $words "$words$\n$\n$users"
    ${EndIf}
  ${EndIf}
  Push $words
  Call Log
FunctionEnd

; --- before it begins -------------------------------------------------------------------------

Function .onInit
  Call ReadCommandLine
  Call CheckMachine
  System::Call 'msi::MsiEnumRelatedProductsW(w "${UPGRADE_CODE}", i 0, i 0, w .r1) i .r0'
  ${If} $0 = 0
    !insertmacro Refuse ${EXIT_OTHER_PRODUCT} "${PRODUCT} is installed from an MSI package: use that for it, or remove it first (msiexec /x $1)."
  ${EndIf}
  ${If} $removes == ""
    ${If} $settings != ""
      !insertmacro Refuse ${EXIT_COMMAND_LINE} "/REMOVESETTINGS belongs to /UNINSTALL."
    ${EndIf}
    Call CheckFolder
    Call FindInstallation
    Call ReadFeatures
  ${Else}
    Call PrepareRemoval
  ${EndIf}
FunctionEnd

Function PrepareRemoval
  ReadRegStr $0 HKLM "${PRODUCT_KEY}" InstallLocation
  ${If} $0 == ""
    !insertmacro Refuse ${EXIT_NOT_INSTALLED} "${PRODUCT} is not installed."
  ${EndIf}
  StrCpy $INSTDIR $0
  Call RequireList
  !insertmacro UnselectSection ${SecBegin}
  !insertmacro UnselectSection ${SecLibrary}
  !insertmacro UnselectSection ${SecTools}
!ifdef HAVE_PANEL
  !insertmacro UnselectSection ${SecPanel}
!endif
  !insertmacro UnselectSection ${SecSdk}
  !insertmacro UnselectSection ${SecFinish}
  !insertmacro SelectSection ${SecRemove}
FunctionEnd

; What follows /D, blanks included, is the folder. The platform takes what no folder can have out of it,
; and another folder if it can be none.
Function CheckFolder
  System::Call 'kernel32::GetCommandLineW() w.r0'
  ClearErrors
  ${WordFind} $0 " /D=" "E+1}" $0
  ${If} ${Errors}
    Return
  ${EndIf}
  StrCpy $1 $0 1 -1
  ${If} $1 == "\"
    StrCpy $0 $0 -1
  ${EndIf}
  ${If} $0 != $INSTDIR
    SetSilent silent
    !insertmacro Refuse ${EXIT_COMMAND_LINE} "'$0' cannot be the folder: /D is the last switch, and takes a full path on a drive that is there."
  ${EndIf}
FunctionEnd

Function FindInstallation
  ReadRegStr $before HKLM "${PRODUCT_KEY}" DisplayVersion
  ReadRegStr $0 HKLM "${PRODUCT_KEY}" InstallLocation
  ${If} $before == ""
    StrCpy $words "This installs the settings library of the KORA4 audio engine and registers it for all users of this computer."
    Return
  ${EndIf}
  ${VersionCompare} $before ${VERSION} $1
  ${If} $1 = 1
    !insertmacro Refuse ${EXIT_OTHER_PRODUCT} "${PRODUCT} $before is installed, which is newer: remove it first."
  ${EndIf}
  ${If} $INSTDIR != $0
  ${AndIf} $INSTDIR != "$PROGRAMFILES64\Velto\KORA4"
    !insertmacro Refuse ${EXIT_OTHER_PRODUCT} "${PRODUCT} is installed in $0: leave out /D, or remove it first."
  ${EndIf}
  StrCpy $INSTDIR $0
  ReadRegStr $features HKLM "${PRODUCT_KEY}" Features
  ${If} $1 = 0
    StrCpy $words "${PRODUCT} $before is installed in $INSTDIR. This repairs it, and adds or removes features. The settings stay."
  ${Else}
    StrCpy $words "${PRODUCT} $before is installed in $INSTDIR. This replaces it with version ${VERSION}. The settings stay."
  ${EndIf}
FunctionEnd

; /FEATURES=WORD,WORD..., or what is installed, or what the sections say.
Function ReadFeatures
  ${If} $wanted != ""
    StrCpy $features $wanted
  ${EndIf}
  ${If} $features == ""
    Return
  ${EndIf}
  !insertmacro UnselectSection ${SecTools}
  !insertmacro UnselectSection ${SecSdk}
!ifdef HAVE_PANEL
  !insertmacro UnselectSection ${SecPanel}
!endif
  StrCpy $0 $features
  ${DoWhile} $0 != ""
    ; The word before the first comma, and the rest.
    ${WordFind} "$0," "," "+1" $1
    StrLen $2 "$1,"
    StrCpy $0 $0 "" $2
    ${Select} $1
      ${Case} "library"
      ${Case} "tools"
        !insertmacro SelectSection ${SecTools}
      ${Case} "sdk"
        !insertmacro SelectSection ${SecSdk}
!ifdef HAVE_PANEL
      ${Case} "panel"
        !insertmacro SelectSection ${SecPanel}
!endif
      ${Case} "all"
        !insertmacro SelectSection ${SecTools}
        !insertmacro SelectSection ${SecSdk}
!ifdef HAVE_PANEL
        !insertmacro SelectSection ${SecPanel}
!endif
      ${CaseElse}
        ; What is installed may have a feature that this setup lacks.
        ${If} $wanted != ""
          !insertmacro Refuse ${EXIT_COMMAND_LINE} "There is no feature '$1': ${FEATURES}, all."
        ${EndIf}
    ${EndSelect}
  ${Loop}
FunctionEnd

Function SkipIfInstalled
  ${If} $before != ""
    Abort
  ${EndIf}
FunctionEnd

Function Cancelled
  SetErrorLevel ${EXIT_CANCELLED}
FunctionEnd

; Also after a failure of the unpacking itself, before anything was changed.
Function .onInstFailed
  ${If} $failure == ""
    SetErrorLevel ${EXIT_FAILED}
    Push "Failed: a file cannot be unpacked, or there is no space. Nothing was changed."
    Call Log
    SetOutPath $TEMP
    FileClose $list
    RMDir /r $work
    Call RemoveRoot
  ${Else}
    SetErrorLevel $code
  ${EndIf}
FunctionEnd

LangString DESC_Library ${LANG_ENGLISH} "QXA64T.dll, registered for all users, with its proxies and manifest."
LangString DESC_Tools ${LANG_ENGLISH} "kora4ctl, which shows, changes and checks settings at a prompt, and kora4sim, which stands in for the engine."
LangString DESC_Sdk ${LANG_ENGLISH} "Headers, libraries, samples and documents for programs that use the library."
LangString DESC_Panel ${LANG_ENGLISH} "A window that shows and changes the settings, with an entry in the Start menu."
!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SecLibrary} $(DESC_Library)
  !insertmacro MUI_DESCRIPTION_TEXT ${SecTools} $(DESC_Tools)
!ifdef HAVE_PANEL
  !insertmacro MUI_DESCRIPTION_TEXT ${SecPanel} $(DESC_Panel)
!endif
  !insertmacro MUI_DESCRIPTION_TEXT ${SecSdk} $(DESC_Sdk)
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; --- removal ----------------------------------------------------------------------------------

Section "un.${PRODUCT}" SecProgram
  SectionIn RO
SectionEnd

Section /o "un.Settings of all users" SecSettings
SectionEnd

Section "-un.Remove"
  ${If} ${SectionIsSelected} ${SecSettings}
    StrCpy $settings 1
  ${EndIf}
  Call un.RemoveProduct
SectionEnd

Function un.onInit
  Call un.ReadCommandLine
  Call un.CheckMachine
  ${If} $EXEPATH == "$INSTDIR\uninstall.exe"
    !insertmacro Refuse ${EXIT_COMMAND_LINE} "With _?= this program cannot remove itself: to wait for the removal, run the setup with /UNINSTALL."
  ${EndIf}
  ${If} $settings != ""
    !insertmacro SelectSection ${SecSettings}
  ${EndIf}
  Call un.RequireList
FunctionEnd
