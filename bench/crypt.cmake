# CRC-32, the library's hash and AES-256, each path beside zlib / OpenSSL.
if(ZLIB_FOUND AND OpenSSL_FOUND)
  tavi_add_bench(crypt ${CMAKE_CURRENT_LIST_DIR}/crypt_bench.cpp)
  target_link_libraries(bench_crypt PRIVATE ZLIB::ZLIB OpenSSL::Crypto)
endif()
