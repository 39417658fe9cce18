# Sourced by test.sh: the whole tree with a second compiler, every warning an error, and src and devkit with that compiler's
# static analyser.
install 60 "${build_packages[@]}" googletest clang-16 clang-tidy-16
build_dependencies x64 90
configure clang-x64
build clang-x64 600
watched "analysing src and devkit" 900 \
  cmake/checks/lookateach.py build/clang-x64 src,devkit --checks='-*,clang-analyzer-*' --warnings-as-errors='*'
step "clang has nothing to say about $(find src devkit -name '*.cpp' | wc -l) sources, nor its compiler about tests and benchmarks"
