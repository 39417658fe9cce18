# Sourced by test.sh: how much of src and devkit the tests reach, by lines and branches. The figures are printed even when
# a test fails, because some measure time and this build is slow.
install 60 "${build_packages[@]}" googletest
prepare_to_run
build_dependencies x64 90
configure mingw-x64-coverage
build mingw-x64-coverage 300
finish_preparing
start_wine
find build/mingw-x64-coverage -name '*.gcda' -delete
# Two programs that end at once would write one file of counters.
run_tests mingw-x64-coverage -j 1 || step "some tests failed; what they would have reached is missing below"
unexplained=0
watched "adding up the counters" 90 cmake/checks/coverage.py build/mingw-x64-coverage build/coverage || unexplained=1
cat build/coverage/table.md
step "each line that was not reached: build/coverage/missed.txt"
[ "$unexplained" = 0 ] || fail "the coverage of src is not what tests/unreached.md says"
