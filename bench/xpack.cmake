# The packed container (LZ + Huffman, CRC, hash, AES) beside zlib level 6.
if(ZLIB_FOUND)
  tavi_add_bench(xpack ${CMAKE_CURRENT_LIST_DIR}/xpack_bench.cpp)
  target_link_libraries(bench_xpack PRIVATE ZLIB::ZLIB)
endif()
