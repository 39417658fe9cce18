# Sourced by test.sh: every test in a build that ends where its behaviour is undefined.
install 60 "${build_packages[@]}" googletest
prepare_to_run
build_dependencies x64 90
configure mingw-x64-traps
build mingw-x64-traps 400
finish_preparing
start_wine
run_tests mingw-x64-traps
