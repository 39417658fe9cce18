# Sourced by test.sh: bad jobs through the filter, guided by the edges of the code that they reach.
install 60 "${build_packages[@]}"
prepare_to_run
build_dependencies x64 50 libxml2 libzip
configure mingw-x64-edges
build mingw-x64-edges 200 filterhost pagevalidatefilter samples
finish_preparing
start_wine
step "running $fuzz bad jobs"
cmake/wine-run.sh build/mingw-x64-edges/bin/filterhost.exe fuzz --guided --cases "$fuzz" \
  --corpus "$(windows_path build/mingw-x64-edges/samples)" --json "$(windows_path build/fuzz.json)" \
  --out-dir "$(windows_path build/fuzz-findings)"
