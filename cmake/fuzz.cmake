# libFuzzer targets, one per kind of input the program reads (fuzz/fuzz_<input>.cpp).
# Off by default; needs clang:
#   CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DQUENLO_BUILD_FUZZERS=ON -DQUENLO_BUILD_TESTS=OFF
# scripts/fuzz.sh configures, builds and runs them all.
option(QUENLO_BUILD_FUZZERS "Build the libFuzzer targets in fuzz/ (clang only)" OFF)

if(QUENLO_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "QUENLO_BUILD_FUZZERS needs clang, for example CC=clang-14 CXX=clang++-14")
  endif()
  # As flags, not per-target options: this file is read after the libraries are defined, and
  # CMake gives every target of a directory the flags the directory ends with. So the libraries
  # get the coverage instrumentation and the sanitizers too, and a fault in them is caught where
  # it happens rather than somewhere later in the fuzzer.
  string(APPEND CMAKE_CXX_FLAGS
    " -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer")
  string(APPEND CMAKE_EXE_LINKER_FLAGS " -fsanitize=address,undefined")

  file(GLOB QUENLO_FUZZ_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/fuzz_*.cpp)
  foreach(source IN LISTS QUENLO_FUZZ_SOURCES)
    get_filename_component(target ${source} NAME_WE)
    add_executable(${target} ${source})
    # morvel brings the whole stack; the core-only targets still link only what they use.
    target_link_libraries(${target} PRIVATE morvel)
    target_include_directories(${target} PRIVATE fuzz)
    target_compile_options(${target} PRIVATE ${QUENLO_WARNINGS} -fsanitize=fuzzer)
    target_link_options(${target} PRIVATE -fsanitize=fuzzer)
    list(APPEND QUENLO_FUZZ_TARGETS ${target})
  endforeach()
  add_custom_target(fuzzers DEPENDS ${QUENLO_FUZZ_TARGETS})
endif()
