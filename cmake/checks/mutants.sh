# Sourced by test.sh: changed lines of src that no test notices.
install 60 "${build_packages[@]}" googletest
prepare_to_run
build_dependencies x64 90
configure mingw-x64-release
build mingw-x64-release 300
finish_preparing
start_wine
tools/mutate --count "$mutants" --build build/mingw-x64-release
