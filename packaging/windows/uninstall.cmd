@echo off
rem Removes the files and the registration of install.cmd. DSNs stay, and so does the registration
rem of the driver if another folder's setup library is in it. Run it as an administrator.
setlocal
set "folder=%~dp0"
"%folder%veltrane-dsn.exe" driver unregister --setup "%folder%VeltraneSetup.dll"
rem 3: there is no such registration.
if errorlevel 4 goto not_removed
if not errorlevel 3 if errorlevel 1 goto not_removed
rem The tool is removed last, so that this script can be run again if a library is in use.
del "%folder%VeltraneSetup.dll" "%folder%VeltraneDialog.dll" >nul 2>&1
if exist "%folder%VeltraneSetup.dll" goto in_use
if exist "%folder%VeltraneDialog.dll" goto in_use
del "%folder%veltrane-dsn.exe"
rem The shell reads this line as a whole. It deletes this script, and its folder if that is empty.
cd /d "%SystemRoot%" & del "%~f0" & rmdir "%folder:~0,-1%" 2>nul & exit /b 0

:not_removed
echo The driver is still registered: run this as an administrator. 1>&2
exit /b 1
:in_use
echo Files in "%folder%" are in use: end the programs that use ODBC, then run this again. 1>&2
exit /b 1
