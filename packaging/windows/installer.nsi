; The installer of the Veltrane ODBC setup for 64-bit Windows; the target `installer` runs makensis:
;   makensis -DVERSION=0.1.0 -DFILES=folder -DOUTPUT=file.exe installer.nsi
; /S installs silently, /D=folder elsewhere. The driver is registered by veltrane-dsn.exe.
Target amd64-unicode
Name "Veltrane ODBC setup ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\Veltrane"
RequestExecutionLevel admin
SetCompressor /SOLID lzma

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\VeltraneODBCSetup"

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

; Ends with an exit code for scripts, and the reason.
!macro Fail TEXT
  SetErrorLevel 2
  DetailPrint "${TEXT}"
  MessageBox MB_OK|MB_ICONSTOP "${TEXT}" /SD IDOK
  Abort "${TEXT}"
!macroend

Section
  SetRegView 64
  SetOutPath "$INSTDIR"
  ClearErrors
  SetOverwrite try
  File /r "${FILES}/*.*"
  IfErrors 0 copied
    !insertmacro Fail "Files in $INSTDIR cannot be written: end the programs that use ODBC."
copied:
  nsExec::ExecToLog '"$INSTDIR\veltrane-dsn.exe" driver register --replace --setup "$INSTDIR\VeltraneSetup.dll"'
  Pop $0
  StrCmp $0 "0" registered
    !insertmacro Fail "The driver could not be registered: run veltrane-dsn.exe doctor."
registered:
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Veltrane ODBC setup"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
SectionEnd

Section Uninstall
  SetRegView 64
  nsExec::ExecToLog '"$INSTDIR\veltrane-dsn.exe" driver unregister --setup "$INSTDIR\VeltraneSetup.dll"'
  Pop $0
  ; 3: there is no such registration, or another folder's setup library is in it.
  StrCmp $0 "0" unregistered
  StrCmp $0 "3" unregistered
    !insertmacro Fail "The driver could not be unregistered: run veltrane-dsn.exe doctor."
unregistered:
  ; What a program has loaded goes when the system starts anew.
  Delete /REBOOTOK "$INSTDIR\VeltraneSetup.dll"
  Delete /REBOOTOK "$INSTDIR\VeltraneDialog.dll"
  Delete "$INSTDIR\veltrane-dsn.exe"
  Delete "$INSTDIR\uninstall.exe"
  RMDir /r "$INSTDIR\docs"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd
