# Sourced by test.sh: clang-tidy with the checks of .clang-tidy over the product and the kit.
install 60 "${build_packages[@]}" clang-16 clang-tidy-16
build_dependencies x64 50 libxml2 libzip
# Each source reads its headers itself: one that does not include what it uses is seen.
configure clang-x64 -DPAGEVALIDATE_PRECOMPILE=OFF -DPAGEVALIDATE_UNITY=OFF -DPAGEVALIDATE_TESTS=OFF
watched "looking at src and devkit with clang-tidy" 1400 cmake/checks/lookateach.py build/clang-x64 src,devkit
step "clang-tidy has nothing to say about $(find src devkit -name '*.cpp' | wc -l) sources"
