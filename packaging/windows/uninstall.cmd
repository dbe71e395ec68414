@echo off
rem Takes away what install.cmd has put into this folder and registered. DSNs stay, and so does the
rem registration of the driver if another folder's setup library is in it. Run it as an administrator.
setlocal
set "folder=%~dp0"
"%folder%veltrane-dsn.exe" driver unregister --setup "%folder%VeltraneSetup.dll"
rem 3: there is no such registration.
if errorlevel 4 goto not_removed
if not errorlevel 3 if errorlevel 1 goto not_removed
del "%folder%VeltraneSetup.dll" "%folder%VeltraneDialog.dll" "%folder%veltrane-dsn.exe"
if exist "%folder%VeltraneSetup.dll" goto in_use
rem The line is read as a whole: this script and its folder, if nothing else is in it, end with it.
cd /d "%SystemRoot%" & del "%~f0" & rmdir "%folder:~0,-1%" 2>nul & exit /b 0

:not_removed
echo The driver is still registered: run this as an administrator. 1>&2
exit /b 1
:in_use
echo Files in "%folder%" are in use: end the programs that use ODBC, then run this again. 1>&2
exit /b 1
