; What the installer and the uninstaller share.

; Fail CODE TEXT: says what is wrong, takes back what was done, and ends with the code.
!macro Fail code text
    StrCpy $failure "${text}"
    DetailPrint "$failure"
    ${If} $changing == 1
        Call TakeBack
    ${EndIf}
    MessageBox MB_OK|MB_ICONSTOP "$failure$\r$\n$\r$\nNothing has been changed." /SD IDOK
    SetErrorLevel ${code}
    Abort "$failure"
!macroend

; Refuse CODE TEXT: the same before there is a page.
!macro Refuse code text
    MessageBox MB_OK|MB_ICONSTOP "${text}" /SD IDOK
    SetErrorLevel ${code}
    Quit
!macroend

; Without it, the registry of 32-bit programs is meant.
!macro OwnRegistryView
    ${If} ${RunningX64}
        SetRegView 64
    ${Else}
        SetRegView 32
    ${EndIf}
!macroend

; The regsvr32 for modules in the folder x86 or x64. This is a 32-bit program: on 64-bit Windows its
; system folder is that of 32-bit programs.
!define REGSVR32_x86 "$SYSDIR\regsvr32.exe"
!define REGSVR32_x64 "$WINDIR\Sysnative\regsvr32.exe"
!define VIEW_x86 32
!define VIEW_x64 64

; RunRegsvr32 FOLDER SWITCHES MODULE CODE: sets the variable to what it ends with.
!macro RunRegsvr32 folder switches module code
    ClearErrors
    ExecWait '"${REGSVR32_${folder}}" ${switches} /s "${module}"' ${code}
    ${If} ${Errors}
        StrCpy ${code} "nothing: it did not start"
    ${EndIf}
!macroend

; ReadRegistered FOLDER MODULE: the module that is registered for programs of this bitness, or nothing.
!macro ReadRegistered folder module
    StrCpy ${module} ""
    ${If} "${folder}" == x86
    ${OrIf} ${RunningX64}
        SetRegView ${VIEW_${folder}}
        ReadRegStr ${module} HKLM "${SERVER}" ""
        !insertmacro OwnRegistryView
    ${EndIf}
!macroend

; RegisterAgain FOLDER MODULE: what was registered before, in whatever folder, if anything.
!macro RegisterAgain folder module
    ${If} "${module}" != ""
    ${AndIf} ${FileExists} "${module}"
        !insertmacro RunRegsvr32 ${folder} "" "${module}" $4
    ${EndIf}
!macroend

; Register FOLDER BITNESS VARIABLE: the new module.
!macro Register folder bitness variable
    DetailPrint "Registering the filter for ${bitness} programs"
    StrCpy ${variable} 1
    !insertmacro RunRegsvr32 ${folder} "" "$INSTDIR\${folder}\TavoResample.ax" $4
    ${If} $4 != 0
        StrCpy ${variable} ""
        !insertmacro Fail ${NOT_REGISTERED} "The filter could not be registered for ${bitness} programs: regsvr32 ended with $4."
    ${EndIf}
!macroend

; CheckBeforeStart: for the first function of either program.
!macro CheckBeforeStart
    ${IfNot} ${AtLeastWin7}
        !insertmacro Refuse ${FAILED} "TavoResample needs Windows 7 or later."
    ${EndIf}
    UserInfo::GetAccountType
    Pop $0
    ${If} $0 != "Admin"
        !insertmacro Refuse ${NO_ADMINISTRATOR} "This needs an administrator."
    ${EndIf}
    System::Call 'kernel32::CreateMutexW(p 0, i 0, w "Global\TavoResample-setup") p .r0 ?e'
    Pop $0
    ${If} $0 = 183
        !insertmacro Refuse ${FAILED} "Another installation of TavoResample is running."
    ${EndIf}
    !insertmacro OwnRegistryView
!macroend

; DefineRefuseUnknownOptions PREFIX HELP. /D and _?= are not among the parameters: whatever is left of
; them was in quotation marks, or was not the last.
!macro DefineRefuseUnknownOptions prefix help
Function ${prefix}RefuseUnknownOptions
    ${GetParameters} $0
    StrCpy $0 "$0 "
    StrCpy $1 ""
    ${DoUntil} $0 == ""
        StrCpy $2 $0 1
        StrCpy $0 $0 "" 1
        ${If} $2 != " "
            StrCpy $1 "$1$2"
            ${Continue}
        ${EndIf}
        StrCpy $3 $1 12
        ${If} $1 != ""
        ${AndIf} $1 != "/S"
        ${AndIf} $1 != "/NCRC"
        !if "${prefix}" == "" ; the uninstaller takes out all parts
        ${AndIf} $3 != "/COMPONENTS="
        !endif
            !insertmacro Refuse ${WRONG_COMMAND_LINE} "$1 is no option here. ${help}"
        ${EndIf}
        StrCpy $1 ""
    ${Loop}
FunctionEnd
!macroend

; RemoveEmptyParents FOLDER: those of the file $1 in this folder.
!macro RemoveEmptyParents folder
    ${Do}
        ${GetParent} $1 $1
        ${If} $1 == ""
            ${ExitDo}
        ${EndIf}
        RMDir "${folder}\$1"
    ${Loop}
!macroend

; DeleteListed FOLDER OPTION: the files that the list in this folder names, the list, and the folders
; that are empty then. Files that nobody listed stay. An option for Delete may be given.
!macro DeleteListed folder option
    ClearErrors
    FileOpen $0 "${folder}\${LIST}" r
    ${IfNot} ${Errors}
        ${Do}
            ClearErrors
            FileRead $0 $1
            ${If} ${Errors}
                ${ExitDo}
            ${EndIf}
            ${TrimNewLines} $1 $1
            ${If} $1 != ""
                Delete ${option} "${folder}\$1"
                !insertmacro RemoveEmptyParents "${folder}"
            ${EndIf}
        ${Loop}
        FileClose $0
        Delete ${option} "${folder}\${LIST}"
    ${EndIf}
    RMDir "${folder}"
    ClearErrors
!macroend

; DefineRefuseInUse PREFIX FUNCTION: ends when a file of the older version is in use. A file that is
; loaded can be read, but not opened for writing.
!macro DefineRefuseInUse prefix
Function ${prefix}IsInUse ; $0: a file; 1 when it is in use
    ${If} ${FileExists} "$0"
        ClearErrors
        FileOpen $1 "$0" a
        ${If} ${Errors}
            StrCpy $2 "$0"
        ${Else}
            FileClose $1
        ${EndIf}
    ${EndIf}
FunctionEnd

Function ${prefix}RefuseInUse
    ${Do}
        StrCpy $2 ""
        StrCpy $0 "$INSTDIR\x86\TavoResample.ax"
        Call ${prefix}IsInUse
        StrCpy $0 "$INSTDIR\x64\TavoResample.ax"
        Call ${prefix}IsInUse
        StrCpy $0 "$INSTDIR\x86\vantrel.exe"
        Call ${prefix}IsInUse
        StrCpy $0 "$INSTDIR\x64\vantrel.exe"
        Call ${prefix}IsInUse
        ${If} $2 == ""
            ${ExitDo}
        ${EndIf}
        ${If} ${Cmd} `MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$2 is in use by a program, or is write-protected.$\r$\n$\r$\nClose the programs that use it, then click Retry." /SD IDCANCEL IDCANCEL`
            SetErrorLevel ${IN_USE}
            Abort "$2 is in use. Nothing has been changed."
        ${EndIf}
    ${Loop}
FunctionEnd
!macroend

; RemoveCreatedFolders FOLDER HIGHEST: empty folders from this one up to the highest.
!macro RemoveCreatedFolders folder highest
    StrCpy $0 "${folder}"
    ${DoWhile} "${highest}" != ""
        RMDir "$0"
        ${If} $0 == "${highest}"
        ${OrIf} $0 == ""
            ${ExitDo}
        ${EndIf}
        ${GetParent} $0 $0
    ${Loop}
!macroend
