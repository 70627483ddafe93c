; Functions of the installer.

!insertmacro DefineRefuseInUse ""
!insertmacro DefineRefuseUnknownOptions "" "There are /S, /COMPONENTS=PART,PART and, at the end and without quotation marks, /D=FOLDER."

Function .onInit
    !insertmacro CheckBeforeStart
    Call FindOlder
    ${If} $INSTDIR == ""
        ${If} ${RunningX64}
            StrCpy $INSTDIR "$PROGRAMFILES64\TavoResample"
        ${Else}
            StrCpy $INSTDIR "$PROGRAMFILES32\TavoResample"
        ${EndIf}
    ${EndIf}
    ${IfNot} ${RunningX64}
        !insertmacro UnselectSection ${Filter64}
        SectionSetText ${Filter64} ""
    ${EndIf}

    Call RefuseUnknownOptions
    ${GetParameters} $1
    ClearErrors
    ${GetOptions} $1 "/COMPONENTS=" $0
    ${IfNot} ${Errors}
        StrCpy $parts $0
    ${EndIf}
    ${If} $parts != ""
        Call ChooseParts
    ${EndIf}
FunctionEnd

; An older version is replaced where it lies.
Function FindOlder
    ReadRegStr $olderFolder HKLM "${ENTRY}" "InstallLocation"
    ${If} $olderFolder == ""
    ${OrIfNot} ${FileExists} "$olderFolder\*.*"
        StrCpy $olderFolder ""
        Return
    ${EndIf}
    ${If} $INSTDIR != ""
    ${AndIf} $INSTDIR != $olderFolder
        !insertmacro Refuse ${WRONG_COMMAND_LINE} "TavoResample is installed in $olderFolder. Take it out there first, or leave /D out."
    ${EndIf}
    StrCpy $INSTDIR $olderFolder
    ReadRegStr $olderVersion HKLM "${ENTRY}" "DisplayVersion"
    ReadRegStr $parts HKLM "${ENTRY}" "Components"
    ReadRegStr $createdFolder HKLM "${ENTRY}" "CreatedFolder"
    StrCpy $olderText "Version $olderVersion in the folder $INSTDIR will be replaced.$\r$\n$\r$\n"
FunctionEnd

Function SkipWhereOlderLies
    ${If} $olderFolder != ""
        Abort
    ${EndIf}
FunctionEnd

; Where the page of the folder is skipped, this button installs.
Function NameNextButton
    ${If} $olderFolder != ""
        GetDlgItem $0 $HWNDPARENT 1
        SendMessage $0 ${WM_SETTEXT} 0 "STR:$(^InstallBtn)"
    ${EndIf}
FunctionEnd

!macro ChoosePart name section
    ${If} $1 == "${name}"
        !insertmacro SelectSection ${section}
        StrCpy $1 ""
    ${EndIf}
!macroend

; Selects the sections that $parts names, and no others.
Function ChooseParts
    !insertmacro UnselectSection ${Filter32}
    !insertmacro UnselectSection ${Filter64}
    !insertmacro UnselectSection ${Vantrel}
    !insertmacro UnselectSection ${Sdk}
    !insertmacro UnselectSection ${Docs}
    StrCpy $0 $parts
    ${Do}
        StrCpy $1 ""
        ${Do}
            StrCpy $2 $0 1
            StrCpy $0 $0 "" 1
            ${If} $2 == ""
            ${OrIf} $2 == ","
                ${ExitDo}
            ${EndIf}
            StrCpy $1 "$1$2"
        ${Loop}
        !insertmacro ChoosePart "filter32" ${Filter32}
        ${If} ${RunningX64}
            !insertmacro ChoosePart "filter64" ${Filter64}
        ${EndIf}
        !insertmacro ChoosePart "vantrel" ${Vantrel}
        !insertmacro ChoosePart "sdk" ${Sdk}
        !insertmacro ChoosePart "docs" ${Docs}
        ${If} $1 != ""
            !insertmacro Refuse ${WRONG_COMMAND_LINE} "There is no part $1 here. The parts are filter32, filter64 (on 64-bit Windows), vantrel, sdk and docs."
        ${EndIf}
    ${LoopUntil} $2 == ""
    ${IfNot} ${SectionIsSelected} ${Filter32}
    ${AndIfNot} ${SectionIsSelected} ${Filter64}
        !insertmacro Refuse ${WRONG_COMMAND_LINE} "One of the parts filter32 and filter64 has to be chosen."
    ${EndIf}
FunctionEnd

; Nothing works without a filter.
Function .onSelChange
    GetDlgItem $0 $HWNDPARENT 1
    ${If} ${SectionIsSelected} ${Filter32}
    ${OrIf} ${SectionIsSelected} ${Filter64}
        EnableWindow $0 1
    ${Else}
        EnableWindow $0 0
    ${EndIf}
FunctionEnd

Function CreateFolder
    StrCpy $0 $INSTDIR
    ${DoUntil} $0 == ""
        ${If} ${FileExists} "$0\*.*"
            ${ExitDo}
        ${EndIf}
        StrCpy $createdFolder $0
        ${GetParent} $0 $0
    ${Loop}
    ClearErrors
    CreateDirectory "$INSTDIR"
    ${If} ${Errors}
        !insertmacro Fail ${FAILED} "The folder $INSTDIR cannot be created."
    ${EndIf}
FunctionEnd

; MoveListed FROM TO: the files that the list in FROM names, and the folders that are empty then; $2 is
; one that could not be moved.
!macro MoveListed from to
    StrCpy $2 ""
    ClearErrors
    FileOpen $0 "${from}\${LIST}" r
    ${IfNot} ${Errors}
        ${Do}
            ClearErrors
            FileRead $0 $1
            ${If} ${Errors}
                ${ExitDo}
            ${EndIf}
            ${TrimNewLines} $1 $1
            ${If} ${FileExists} "${from}\$1"
                ${GetParent} "${to}\$1" $3
                CreateDirectory $3
                ClearErrors
                Rename "${from}\$1" "${to}\$1"
                ${If} ${Errors}
                    StrCpy $2 "$1"
                ${EndIf}
            ${EndIf}
            !insertmacro RemoveEmptyParents "${from}"
        ${Loop}
        FileClose $0
    ${EndIf}
!macroend

; The older version's files are kept until the new ones are registered.
Function SetOlderAside
    !insertmacro ReadRegistered x86 $older32
    !insertmacro ReadRegistered x64 $older64
    ${If} $olderFolder == ""
    ${OrIfNot} ${FileExists} "$INSTDIR\${LIST}"
        Return
    ${EndIf}
    DetailPrint "Setting version $olderVersion aside"
    !insertmacro DeleteListed "${ASIDE}" ""
    CreateDirectory "${ASIDE}"
    CopyFiles /SILENT "$INSTDIR\${LIST}" "${ASIDE}\${LIST}"
    ${IfNot} ${FileExists} "${ASIDE}\${LIST}"
        !insertmacro Fail ${FAILED} "The folder $INSTDIR cannot be written to."
    ${EndIf}
    ${If} $older32 == "$INSTDIR\x86\TavoResample.ax"
        !insertmacro RunRegsvr32 x86 /u $older32 $4
    ${EndIf}
    ${If} $older64 == "$INSTDIR\x64\TavoResample.ax"
        !insertmacro RunRegsvr32 x64 /u $older64 $4
    ${EndIf}
    !insertmacro MoveListed "$INSTDIR" "${ASIDE}"
    ${If} $2 != ""
        !insertmacro Fail ${FAILED} "The file $INSTDIR\$2 cannot be replaced."
    ${EndIf}
FunctionEnd

; Starts the list of the new files.
Function OpenList
    ClearErrors
    FileOpen $list "$INSTDIR\${LIST}" w
    ${If} ${Errors}
        StrCpy $list ""
        !insertmacro Fail ${FAILED} "The folder $INSTDIR cannot be written to."
    ${EndIf}
    StrCpy $hasNew 1
FunctionEnd

!macro AddPart name section
    ${If} ${SectionIsSelected} ${section}
        StrCpy $parts "$parts,${name}"
    ${EndIf}
!macroend

; For the list of installed programs, and for the next installer.
Function WriteEntry
    StrCpy $parts ""
    !insertmacro AddPart "filter32" ${Filter32}
    !insertmacro AddPart "filter64" ${Filter64}
    !insertmacro AddPart "vantrel" ${Vantrel}
    !insertmacro AddPart "sdk" ${Sdk}
    !insertmacro AddPart "docs" ${Docs}
    StrCpy $parts $parts "" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    ClearErrors
    WriteRegStr HKLM "${ENTRY}" "DisplayName" "TavoResample (Mira Vantrel)"
    WriteRegStr HKLM "${ENTRY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKLM "${ENTRY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
    WriteRegStr HKLM "${ENTRY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKLM "${ENTRY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKLM "${ENTRY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegStr HKLM "${ENTRY}" "Components" "$parts"
    WriteRegStr HKLM "${ENTRY}" "CreatedFolder" "$createdFolder"
    WriteRegDWORD HKLM "${ENTRY}" "EstimatedSize" $0
    WriteRegDWORD HKLM "${ENTRY}" "NoModify" 1
    WriteRegDWORD HKLM "${ENTRY}" "NoRepair" 1
    ${If} ${Errors}
        !insertmacro Fail ${FAILED} "The registry cannot be written."
    ${EndIf}
FunctionEnd

; Everything becomes as it was before the first change.
Function TakeBack
    StrCpy $changing ""
    ${If} $list != ""
        FileClose $list
        StrCpy $list ""
    ${EndIf}
    SetOutPath "$TEMP" ; the current folder cannot be removed
    ${If} $new32 == 1
        !insertmacro RunRegsvr32 x86 /u "$INSTDIR\x86\TavoResample.ax" $4
    ${EndIf}
    ${If} $new64 == 1
        !insertmacro RunRegsvr32 x64 /u "$INSTDIR\x64\TavoResample.ax" $4
    ${EndIf}
    ${If} $hasNew == 1
        !insertmacro DeleteListed "$INSTDIR" ""
    ${EndIf}
    ${If} ${FileExists} "${ASIDE}\${LIST}"
        !insertmacro MoveListed "${ASIDE}" "$INSTDIR"
        CopyFiles /SILENT "${ASIDE}\${LIST}" "$INSTDIR\${LIST}"
        !insertmacro DeleteListed "${ASIDE}" ""
    ${EndIf}
    ${If} $olderFolder == ""
        DeleteRegKey HKLM "${ENTRY}"
    ${EndIf}
    !insertmacro RegisterAgain x86 $older32
    !insertmacro RegisterAgain x64 $older64
    !insertmacro RemoveCreatedFolders "$INSTDIR" "$createdFolder"
FunctionEnd

; The installer ended by itself, for instance on a full disk.
Function .onInstFailed
    ${If} $changing == 1
        Call TakeBack
    ${EndIf}
FunctionEnd

Function ShowReadme
    Exec 'notepad.exe "$INSTDIR\README.md"'
FunctionEnd
