# Saving and loading a collection of 1,000,000 small records, raw and packed, beside
# stdio and zlib doing the same work by hand.
if(ZLIB_FOUND)
  tavi_add_bench(persist ${CMAKE_CURRENT_LIST_DIR}/persist_bench.cpp)
  target_link_libraries(bench_persist PRIVATE ZLIB::ZLIB)
endif()
