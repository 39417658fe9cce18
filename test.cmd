@echo off
rem Builds everything with Visual Studio and runs every test: test.cmd [CTEST-OPTION...]
rem Needs Visual Studio 2022, CMake, vcpkg (VCPKG_ROOT), and Python with what requirements.txt names.
setlocal
cd /d "%~dp0"
if "%VCPKG_ROOT%"=="" (echo VCPKG_ROOT is not set & exit /b 1)
cmake --preset msvc-x64 || exit /b 1
cmake --build --preset msvc-x64 || exit /b 1
ctest --preset msvc-x64 %*
