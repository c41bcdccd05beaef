# The UTF-8 converter, each path beside ICU's u_strFromUTF8 / u_strToUTF8.
tavi_add_bench(utf8 ${CMAKE_CURRENT_LIST_DIR}/utf8_bench.cpp)
target_link_libraries(bench_utf8 PRIVATE ICU::uc)
