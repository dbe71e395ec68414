; The installer of the Veltrane ODBC setup for 64-bit Windows, made by makensis:
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

Section
  SetRegView 64
  SetOutPath "$INSTDIR"
  File "${FILES}/VeltraneSetup.dll"
  File "${FILES}/VeltraneDialog.dll"
  File "${FILES}/veltrane-dsn.exe"
  nsExec::Exec '"$INSTDIR\veltrane-dsn.exe" driver register --replace --setup "$INSTDIR\VeltraneSetup.dll"'
  Pop $0
  StrCmp $0 "0" registered
    SetErrorLevel 2
    Abort "The driver could not be registered: run veltrane-dsn.exe doctor."
registered:
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "Veltrane ODBC setup"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
SectionEnd

Section Uninstall
  SetRegView 64
  nsExec::Exec '"$INSTDIR\veltrane-dsn.exe" driver unregister'
  Pop $0
  Delete "$INSTDIR\VeltraneSetup.dll"
  Delete "$INSTDIR\VeltraneDialog.dll"
  Delete "$INSTDIR\veltrane-dsn.exe"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd
