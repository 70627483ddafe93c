; The uninstaller.

!insertmacro DefineRefuseInUse "un."
!insertmacro DefineRefuseUnknownOptions "un." "There are /S and, at the end and without quotation marks, _?=FOLDER."

Function un.onInit
    !insertmacro CheckBeforeStart
    Call un.RefuseUnknownOptions
FunctionEnd

; Unregister FOLDER BITNESS RESULT: sets the variable to 1 when it was registered from here. One
; that is registered from elsewhere stays.
!macro Unregister folder bitness result
    StrCpy ${result} ""
    !insertmacro ReadRegistered ${folder} $3
    ${If} $3 == "$INSTDIR\${folder}\TavoResample.ax"
    ${AndIf} ${FileExists} "$3"
        DetailPrint "Unregistering the filter for ${bitness} programs"
        !insertmacro RunRegsvr32 ${folder} /u "$3" $4
        ${If} $4 != 0
            StrCpy $failure "The filter could not be unregistered for ${bitness} programs: regsvr32 ended with $4."
        ${EndIf}
        StrCpy ${result} 1
    ${EndIf}
!macroend

Section Uninstall
    Call un.RefuseInUse
    StrCpy $failure ""
    !insertmacro Unregister x86 32-bit $new32
    !insertmacro Unregister x64 64-bit $new64
    ${If} $failure != ""
        ${If} $new32 == 1
            !insertmacro RunRegsvr32 x86 "" "$INSTDIR\x86\TavoResample.ax" $4
        ${EndIf}
        ${If} $new64 == 1
            !insertmacro RunRegsvr32 x64 "" "$INSTDIR\x64\TavoResample.ax" $4
        ${EndIf}
        MessageBox MB_OK|MB_ICONSTOP "$failure$\r$\n$\r$\nNothing has been removed." /SD IDOK
        SetErrorLevel ${NOT_REGISTERED}
        Abort "$failure"
    ${EndIf}
    ReadRegStr $createdFolder HKLM "${ENTRY}" "CreatedFolder"
    ReadRegStr $olderFolder HKLM "${ENTRY}" "InstallLocation"
    SetOutPath "$TEMP" ; the current folder cannot be removed
    !insertmacro DeleteListed "$INSTDIR" ""
    ; A program that began to use one of them just now keeps it until Windows starts again.
    Delete /REBOOTOK "$INSTDIR\x86\TavoResample.ax"
    Delete /REBOOTOK "$INSTDIR\x64\TavoResample.ax"
    Delete /REBOOTOK "$INSTDIR\x86\vantrel.exe"
    Delete /REBOOTOK "$INSTDIR\x64\vantrel.exe"
    Delete "$INSTDIR\uninstall.exe"
    !insertmacro RemoveCreatedFolders "$INSTDIR" "$createdFolder"
    ${If} $olderFolder == $INSTDIR
        DeleteRegKey HKLM "${ENTRY}"
    ${EndIf}
SectionEnd
