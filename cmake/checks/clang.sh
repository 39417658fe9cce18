# Sourced by test.sh: src with a second compiler, every warning an error, and with that compiler's static analyser.
install 60 "${build_packages[@]}" clang-16 clang-tidy-16
configure clang-x64 -DPAGEVALIDATE_DEVKIT=OFF
build clang-x64 60 pagevalidatefilter
watched "analysing src" 120 cmake/checks/lookateach.py build/clang-x64 src --checks='-*,clang-analyzer-*' --warnings-as-errors='*'
step "clang has nothing to say about $(find src -name '*.cpp' | wc -l) sources"
