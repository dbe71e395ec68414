@echo off
rem Installs the Veltrane ODBC setup from the folder of this script and registers the driver. Run it
rem as an administrator; a second run repairs or upgrades.
rem   install.cmd [folder]     default: Veltrane in the folder of programs
setlocal
set "source=%~dp0"
set "folder=%~1"
if "%folder%"=="" set "folder=%ProgramFiles%\Veltrane"
rem Registers the full path, even if it was given relative or with a trailing backslash.
for %%f in ("%folder%\.") do set "folder=%%~ff"
"%source%veltrane-dsn.exe" --version >nul
if errorlevel 1 goto cannot_run
if not exist "%folder%\" mkdir "%folder%"
if not exist "%folder%\" goto no_folder

rem Copies all files before it replaces the first: a full disk changes nothing.
for %%f in (VeltraneSetup.dll VeltraneDialog.dll veltrane-dsn.exe uninstall.cmd) do (
  copy /b /y "%source%%%f" "%folder%\%%f.new" >nul
  if errorlevel 1 goto no_copy
)
for %%f in (VeltraneSetup.dll VeltraneDialog.dll veltrane-dsn.exe uninstall.cmd) do (
  move /y "%folder%\%%f.new" "%folder%\%%f" >nul
  if errorlevel 1 goto in_use
)
"%folder%\veltrane-dsn.exe" driver register --replace --setup "%folder%\VeltraneSetup.dll"
if errorlevel 1 goto not_registered
exit /b 0

:cannot_run
echo veltrane-dsn.exe does not run here: 64-bit Windows is needed, and all files of the archive. 1>&2
exit /b 1
:no_folder
echo "%folder%" cannot be made: run this as an administrator. 1>&2
exit /b 1
:no_copy
del "%folder%\*.new" >nul 2>&1
echo The files cannot be copied to "%folder%": run this as an administrator. 1>&2
exit /b 1
:in_use
del "%folder%\*.new" >nul 2>&1
echo Files in "%folder%" are in use: end the programs that use ODBC, then run this again. 1>&2
exit /b 1
:not_registered
echo The driver is not registered: run this as an administrator. 1>&2
exit /b 1
