@echo off
setlocal EnableExtensions DisableDelayedExpansion
rem Registers the filter from the folder in which this file lies.
rem Usage: install.cmd [/quiet]
rem Exit codes: 0 done, 2 a file is missing, 3 wrong command line, 4 no administrator, 6 not registered.

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
set "is64="
if not "%PROCESSOR_ARCHITECTURE%"=="x86" set "is64=1"
if defined PROCESSOR_ARCHITEW6432 set "is64=1"
rem In a 32-bit prompt of 64-bit Windows, System32 is the folder of 32-bit programs.
if defined PROCESSOR_ARCHITEW6432 set "system=%SystemRoot%\Sysnative"
if defined is64 set "for32=%SystemRoot%\SysWOW64"

if not exist "%here%x86\TavoResample.ax" goto missing
if not exist "%here%x64\TavoResample.ax" goto missing

"%system%\reg.exe" add "HKLM\Software\TavoResample-may-write" /f >nul 2>&1
if errorlevel 1 goto no_admin
"%system%\reg.exe" delete "HKLM\Software\TavoResample-may-write" /f >nul 2>&1

"%for32%\regsvr32.exe" /s "%here%x86\TavoResample.ax"
if not "%errorlevel%"=="0" goto failed32
if not defined quiet echo Registered for 32-bit programs: "%here%x86\TavoResample.ax"
if not defined is64 goto done

"%system%\regsvr32.exe" /s "%here%x64\TavoResample.ax"
if not "%errorlevel%"=="0" goto failed64
if not defined quiet echo Registered for 64-bit programs: "%here%x64\TavoResample.ax"

:done
if not defined quiet echo Keep this folder: programs load the filter from it. uninstall.cmd takes it out again.
goto end

:usage
echo Usage: install.cmd [/quiet]
set "quiet=1"
set "code=3"
goto end

:missing
echo There is no TavoResample.ax in the folders x86 and x64 beside this file. Unpack the whole zip file first.
set "code=2"
goto end

:no_admin
echo This needs an administrator: right-click install.cmd and choose "Run as administrator".
set "code=4"
goto end

:failed32
echo The filter could not be registered for 32-bit programs: regsvr32 ended with %errorlevel%.
set "code=6"
goto end

:failed64
echo The filter could not be registered for 64-bit programs: regsvr32 ended with %errorlevel%.
"%for32%\regsvr32.exe" /u /s "%here%x86\TavoResample.ax"
echo The registration for 32-bit programs was undone.
set "code=6"
goto end

:end
if not defined quiet pause
exit /b %code%
