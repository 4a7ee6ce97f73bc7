# One sanitizer set for the whole build, so that every library and test agrees.
if(VELMORA_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
elseif(VELMORA_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(NOT VELMORA_SANITIZE STREQUAL "")
  message(FATAL_ERROR "VELMORA_SANITIZE must be empty, 'address' or 'thread', not '${VELMORA_SANITIZE}'")
endif()

# A fuzzing build puts libFuzzer's coverage into every library and program, so
# that a fuzzer is guided by what it reaches inside the readers and not only in
# its own harness. The fuzz targets link libFuzzer itself (fuzz/CMakeLists.txt);
# everything else links with fuzzer-no-link, which brings the coverage hooks.
if(VELMORA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "VELMORA_FUZZ needs clang: configure with CC=clang CXX=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
  add_link_options(-fsanitize=fuzzer-no-link)
endif()
