tavi_add_fuzzer(block_framing ${CMAKE_CURRENT_LIST_DIR}/block_framing_fuzz.cpp)
target_sources(fuzz_block_framing PRIVATE ${PROJECT_SOURCE_DIR}/tools/tavi/pack_format.cpp)
target_include_directories(fuzz_block_framing PRIVATE ${PROJECT_SOURCE_DIR}/tools/tavi)
