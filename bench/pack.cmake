# Huffman and LZ coders beside zlib (Huffman-only deflate, levels 1 and 6, inflate).
if(ZLIB_FOUND)
  tavi_add_bench(pack ${CMAKE_CURRENT_LIST_DIR}/pack_bench.cpp)
  target_link_libraries(bench_pack PRIVATE ZLIB::ZLIB)
endif()
