# Benchmarks (Google Benchmark from Debian's libbenchmark-dev) and the bare Qt Widgets program
# that is the floor for the start-up figures. Off by default; scripts/bench.sh switches it on.
option(QUENLO_BUILD_BENCH "Build the benchmarks (quenlo_bench, bench_bare_label)" OFF)

if(QUENLO_BUILD_BENCH)
  find_package(benchmark REQUIRED)
  file(GLOB QUENLO_BENCH_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/bench_*.cpp
    ${CMAKE_CURRENT_SOURCE_DIR}/bench/bench_*.h)
  add_executable(quenlo_bench ${QUENLO_BENCH_SOURCES})
  target_link_libraries(quenlo_bench PRIVATE morvel benchmark::benchmark)
  target_compile_options(quenlo_bench PRIVATE ${QUENLO_WARNINGS})

  # Deliberately nothing of ours: one label in a window, what any Qt Widgets program pays.
  qt_add_executable(bench_bare_label bench/bare_label.cpp)
  target_link_libraries(bench_bare_label PRIVATE Qt6::Widgets)
  target_compile_options(bench_bare_label PRIVATE ${QUENLO_WARNINGS})
  if(Fontconfig_FOUND)
    find_package(Threads REQUIRED)
    target_link_libraries(bench_bare_label PRIVATE Fontconfig::Fontconfig Threads::Threads)
    target_compile_definitions(bench_bare_label PRIVATE BARE_HAVE_FONTCONFIG)
  endif()
endif()
