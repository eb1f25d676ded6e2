@rem SPDX-License-Identifier: MIT
@rem selftest.cmd [/force] [PROGRAM...]: tests KORA4 ASL on this machine, with all programs of this
@rem folder or the named ones, and leaves report.txt. selftest.cmd /restore gives the settings back
@rem that an interrupted run has saved; selftest.cmd /? says more.
@echo off
setlocal enableextensions disabledelayedexpansion
set "KIT=%~dp0"
set "GUARD=%KIT%kora4_selftest.exe"
set "KORA4_ROOT=%KIT%."
set FORCE=
set WANTED=
if /i "%~1"==":run" goto run

:arguments
if "%~1"=="" goto begin
if "%~1"=="/?" goto usage
if /i "%~1"=="/restore" goto restore
if /i "%~1"=="/force" (set FORCE=/force) else set "WANTED=%WANTED% %~1"
shift
goto arguments

:usage
echo selftest.cmd [/force] [PROGRAM...]
echo.
echo Tests KORA4 ASL on this machine: registers the library of this folder again and again, writes
echo settings, and leaves report.txt. programs.txt lists the programs; without a name all are run.
echo The settings, the registration, C:\KalLogs and the data folder of the tools are saved first and
echo given back at the end, also after Ctrl-C and when this window is closed. If the machine went
echo down meanwhile, run: selftest.cmd /restore
echo.
echo /force      also on a machine where the library is registered; end its clients before
echo.
echo Exit codes: 0 all passed, 1 a program failed, 2 wrong arguments, 3 this machine may not be
echo touched, 4 saving or giving back failed.
exit /b 2

:restore
"%GUARD%" restore
exit /b %errorlevel%

:begin
rem No "&&" and no "||" behind calls: Wine's shell does not take their results.
set UNKNOWN=
for %%w in (%WANTED%) do call :known %%w
if defined UNKNOWN echo There is no program '%UNKNOWN%'; programs.txt lists them all.
if defined UNKNOWN exit /b 2
"%GUARD%" check %FORCE%
if errorlevel 1 exit /b 3
rem It saves, calls this file again with :run, and restores, however that ends.
"%GUARD%" guard %WANTED%
exit /b %errorlevel%

:known
set FOUND=
for /f "usebackq tokens=1 delims=|" %%a in ("%KIT%programs.txt") do if /i "%%a"=="%~1" set FOUND=1
if not defined FOUND set "UNKNOWN=%~1"
exit /b 0

rem ---- What the guard calls -------------------------------------------------------------------
:run
shift
if "%~1"=="" goto report
set "WANTED=%WANTED% %~1"
goto run

:report
set "REPORT=%KIT%report.txt"
set TOTAL=0
set NUMBER=0
set FAILED=0
set STOPPED=
for /f "usebackq tokens=1 delims=|" %%a in ("%KIT%programs.txt") do call :count %%a
echo KORA4 ASL self-test> "%REPORT%"
ver >> "%REPORT%"
"%GUARD%" versions >> "%REPORT%"
for %%t in (kora4ctl kora4sim) do call :version %%t
echo.>> "%REPORT%"
for /f "usebackq tokens=1,2,3 delims=|" %%a in ("%KIT%programs.txt") do (
    if not defined STOPPED call :program "%%a" "%%b" "%%c"
)
if defined STOPPED goto interrupted
echo.>> "%REPORT%"
if exist "%KIT%left_out.txt" type "%KIT%left_out.txt" >> "%REPORT%"
echo result: %FAILED% of %NUMBER% programs failed>> "%REPORT%"
echo %FAILED% of %NUMBER% programs failed; the report is in report.txt.
if not "%FAILED%"=="0" exit /b 1
exit /b 0

:interrupted
echo result: interrupted after %NUMBER% of %TOTAL% programs>> "%REPORT%"
echo Interrupted.
exit /b 1

:version
for /f "delims=" %%v in ('call "%KIT%%~1.exe" --version') do echo %~1.exe %%v>> "%REPORT%"
exit /b 0

:choose
set CHOSEN=
if "%WANTED%"=="" set CHOSEN=1
for %%w in (%WANTED%) do if /i "%%w"=="%~1" set CHOSEN=1
exit /b 0

:count
call :choose %1
if defined CHOSEN set /a TOTAL+=1
exit /b 0

:program
call :choose %1
if not defined CHOSEN exit /b 0
set /a NUMBER+=1
"%GUARD%" run "%NUMBER%/%TOTAL%" "%~1" "%~2" %~3
set RESULT=%errorlevel%
if "%RESULT%"=="0" exit /b 0
if "%RESULT%"=="3" set STOPPED=1
if "%RESULT%"=="3" exit /b 0
set /a FAILED+=1
rem The guard reports what it has run.
if not "%RESULT%"=="1" >> "%REPORT%" echo %~1: FAILED, not run: the guard ended with %RESULT%
exit /b 0
