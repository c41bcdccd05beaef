//===- tavi.h - Everything the library offers ------------------*- C++ -*-===//
//
// Umbrella header: includes every public header of the library.
//
//===----------------------------------------------------------------------===//
#pragma once

#include "tavi/export.h"
#include "tavi/version.h"

#include "tavi/core/buffer.h"
#include "tavi/core/error.h"
#include "tavi/core/local_buffer.h"
#include "tavi/core/local_memory.h"
#include "tavi/core/string.h"
#include "tavi/core/title_text.h"
#include "tavi/core/types.h"
#include "tavi/core/user_interface.h"
#include "tavi/crypt/aes256.h"
#include "tavi/crypt/crc32.h"
#include "tavi/crypt/sha256.h"
#include "tavi/file/file.h"
#include "tavi/file/find_file.h"
#include "tavi/format/double_text.h"
#include "tavi/format/integer_text.h"
#include "tavi/format/number_options.h"
#include "tavi/format/numbering.h"
#include "tavi/format/real_text.h"
#include "tavi/format/size_text.h"
#include "tavi/format/text_options.h"
#include "tavi/io/bit_stream.h"
#include "tavi/io/pack_number.h"
#include "tavi/io/routed.h"
#include "tavi/io/sized_record.h"
#include "tavi/io/stream.h"
#include "tavi/resource/string_resource.h"
#include "tavi/text/code_page.h"
#include "tavi/text/text_file.h"
#include "tavi/thread/count_safe.h"
#include "tavi/thread/parallel.h"
#include "tavi/thread/progress.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"
#include "tavi/time/system_time.h"
