# Small and block-sized file writes and reads through XFile, beside stdio.
tavi_add_bench(file ${CMAKE_CURRENT_LIST_DIR}/file_bench.cpp)
