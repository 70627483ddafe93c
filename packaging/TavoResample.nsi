; The installer. scripts/package.sh makes it: VERSION, STAGE (the folder of the files), FILES (a script
; with the files of each part) and OUT are given on the command line.

Unicode true
ManifestDPIAware true
RequestExecutionLevel admin
SetCompressor /SOLID lzma
SetDateSave off
SetOverwrite try
CRCCheck force
Name "TavoResample ${VERSION}"
OutFile "${OUT}"
BrandingText "TavoResample ${VERSION}"

VIProductVersion "${VERSION}.0"
VIFileVersion "${VERSION}.0"
VIAddVersionKey ProductName "TavoResample"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "Installer of TavoResample"
VIAddVersionKey OriginalFilename "TavoResample-${VERSION}-setup.exe"
VIAddVersionKey LegalCopyright ""

!include MUI2.nsh
!include LogicLib.nsh
!include Sections.nsh
!include FileFunc.nsh
!include TextFunc.nsh
!include WinVer.nsh
!include x64.nsh

; What setup.exe and uninstall.exe end with; 1 is "cancelled".
!define FAILED 2
!define WRONG_COMMAND_LINE 3
!define NO_ADMINISTRATOR 4
!define IN_USE 5
!define NOT_REGISTERED 6

!define ENTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\TavoResample"
!define SERVER "Software\Classes\CLSID\{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}\InprocServer32"
!define LIST "installed.txt"

!include "${__FILEDIR__}\common.nsh"

Var olderFolder      ; where an older version lies, or empty
Var olderVersion
Var olderText        ; what the first page says of it
Var older32          ; the path of the module that was registered before, or empty
Var older64
Var new32            ; 1 when the new module has been registered
Var new64
Var hasNew           ; 1 when the list in the folder is that of the new files
Var list             ; this list while it is open, or empty
Var createdFolder    ; the highest folder that was created for the program, or empty
Var parts            ; the names of the chosen parts, with commas between them
Var failure          ; what is wrong
Var changing         ; 1 from the first change to the last

; Where an older version's files wait.
!define ASIDE "$INSTDIR\~TavoResample-older"

; Pages

!define MUI_ABORTWARNING
!define MUI_ICON "${NSISDIR}\Contrib\Graphics\Icons\nsis3-install.ico"
!define MUI_UNICON "${NSISDIR}\Contrib\Graphics\Icons\nsis3-uninstall.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${NSISDIR}\Contrib\Graphics\Wizard\nsis3-grey.bmp"
!define MUI_COMPONENTSPAGE_SMALLDESC
!define MUI_WELCOMEPAGE_TEXT "$(Welcome)"
!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_CUSTOMFUNCTION_SHOW NameNextButton
!insertmacro MUI_PAGE_COMPONENTS
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhereOlderLies
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_TEXT "TavoResample is installed. Programs find the filter by the name Mira Vantrel."
!define MUI_FINISHPAGE_SHOWREADME
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Show how to use it"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION ShowReadme
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

LangString Welcome ${LANG_ENGLISH} "This installs the video filter Mira Vantrel and the program vantrel.$\r$\n$\r$\n$olderTextClose programs that use the filter before you go on.$\r$\n$\r$\nClick Next to continue."

; Parts. FILES has a macro for each, of Put lines.

!macro Put folder name
    SetOutPath "$INSTDIR${folder}"
    StrCpy $0 "${folder}\${name}" "" 1
    FileWrite $list "$0$\r$\n"
    ClearErrors
    File "${STAGE}${folder}\${name}"
    ${If} ${Errors}
        !insertmacro Fail ${FAILED} "The file $INSTDIR${folder}\${name} cannot be written."
    ${EndIf}
!macroend
!include "${FILES}"

Section "-Prepare"
    Call RefuseInUse
    StrCpy $changing 1
    Call CreateFolder
    Call SetOlderAside
    Call OpenList
    !insertmacro Files_core
SectionEnd

Section "Filter for 32-bit programs" Filter32
    !insertmacro Files_filter32
SectionEnd

Section "Filter for 64-bit programs" Filter64
    !insertmacro Files_filter64
SectionEnd

Section "Command line: vantrel" Vantrel
    ${If} ${SectionIsSelected} ${Filter32}
        !insertmacro Files_vantrel32
    ${EndIf}
    ${If} ${SectionIsSelected} ${Filter64}
        !insertmacro Files_vantrel64
    ${EndIf}
SectionEnd

Section "For programmers" Sdk
    !insertmacro Files_sdk
SectionEnd

Section "Documentation" Docs
    !insertmacro Files_docs
SectionEnd

Section "-Finish"
    SetOutPath "$INSTDIR"
    FileWrite $list "uninstall.exe$\r$\n"
    FileClose $list
    StrCpy $list ""
    ClearErrors
    WriteUninstaller "$INSTDIR\uninstall.exe"
    ${If} ${Errors}
        !insertmacro Fail ${FAILED} "The file $INSTDIR\uninstall.exe cannot be written."
    ${EndIf}
    ${If} ${SectionIsSelected} ${Filter32}
        !insertmacro Register x86 32-bit $new32
    ${EndIf}
    ${If} ${SectionIsSelected} ${Filter64}
        !insertmacro Register x64 64-bit $new64
    ${EndIf}
    Call WriteEntry
    StrCpy $changing ""
    !insertmacro DeleteListed "${ASIDE}" /REBOOTOK
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
    !insertmacro MUI_DESCRIPTION_TEXT ${Filter32} "The filter Mira Vantrel, registered for 32-bit programs."
    !insertmacro MUI_DESCRIPTION_TEXT ${Filter64} "The filter Mira Vantrel, registered for 64-bit programs."
    !insertmacro MUI_DESCRIPTION_TEXT ${Vantrel} "A program that sends a video file through the filter, for each kind of filter that is chosen."
    !insertmacro MUI_DESCRIPTION_TEXT ${Sdk} "The header of the filter's interface, and examples."
    !insertmacro MUI_DESCRIPTION_TEXT ${Docs} "The manual, with pictures."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

!include "${__FILEDIR__}\install.nsh"
!include "${__FILEDIR__}\uninstall.nsh"
