@echo off
setlocal EnableExtensions DisableDelayedExpansion
rem Takes out what install.cmd in this folder registered. A filter that is registered from elsewhere stays.
rem Usage: uninstall.cmd [/quiet]
rem Exit codes: 0 done, 3 wrong command line, 4 no administrator, 6 not unregistered.

set "here=%~dp0"
set "code=0"
set "quiet="
if "%~1"=="" goto start
if /i not "%~1"=="/quiet" goto usage
if not "%~2"=="" goto usage
set "quiet=1"

:start
set "system=%SystemRoot%\System32"
set "for32=%SystemRoot%\System32"
set "view32="
set "is64="
if not "%PROCESSOR_ARCHITECTURE%"=="x86" set "is64=1"
if defined PROCESSOR_ARCHITEW6432 set "is64=1"
rem In a 32-bit prompt of 64-bit Windows, System32 is the folder of 32-bit programs.
if defined PROCESSOR_ARCHITEW6432 set "system=%SystemRoot%\Sysnative"
if defined is64 set "for32=%SystemRoot%\SysWOW64"
if defined is64 set "view32=/reg:32"
rem Its value is the module that is registered.
set "class=HKLM\Software\Classes\CLSID\{80650FA1-6CCB-4807-B027-46AA6BE5BFC9}\InprocServer32"

"%system%\reg.exe" add "HKLM\Software\TavoResample-may-write" /f >nul 2>&1
if errorlevel 1 goto no_admin
"%system%\reg.exe" delete "HKLM\Software\TavoResample-may-write" /f >nul 2>&1

set "line="
for /f "delims=" %%L in ('%system%\reg.exe query "%class%" /ve %view32% 2^>nul') do set "line=%%L"
if not defined line goto not32
if /i not "%line:*REG_SZ    =%"=="%here%x86\TavoResample.ax" goto not32
"%for32%\regsvr32.exe" /u /s "%here%x86\TavoResample.ax"
if not "%errorlevel%"=="0" goto failed32
if not defined quiet echo No longer registered for 32-bit programs.
goto next
:not32
if not defined quiet echo It was not registered from this folder for 32-bit programs.
goto next
:failed32
echo The filter could not be unregistered for 32-bit programs: regsvr32 ended with %errorlevel%.
set "code=6"

:next
if not defined is64 goto end
set "line="
for /f "delims=" %%L in ('%system%\reg.exe query "%class%" /ve /reg:64 2^>nul') do set "line=%%L"
if not defined line goto not64
if /i not "%line:*REG_SZ    =%"=="%here%x64\TavoResample.ax" goto not64
"%system%\regsvr32.exe" /u /s "%here%x64\TavoResample.ax"
if not "%errorlevel%"=="0" goto failed64
if not defined quiet echo No longer registered for 64-bit programs.
goto end
:not64
if not defined quiet echo It was not registered from this folder for 64-bit programs.
goto end
:failed64
echo The filter could not be unregistered for 64-bit programs: regsvr32 ended with %errorlevel%.
set "code=6"
goto end

:usage
echo Usage: uninstall.cmd [/quiet]
set "quiet=1"
set "code=3"
goto end

:no_admin
echo This needs an administrator: right-click uninstall.cmd and choose "Run as administrator".
set "code=4"

:end
if not defined quiet pause
exit /b %code%
