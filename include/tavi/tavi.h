//===- tavi.h - Everything the library offers ------------------*- C++ -*-===//
//
// Umbrella header: includes every public header of the library.
//
//===----------------------------------------------------------------------===//
#pragma once

#include "tavi/export.h"
#include "tavi/time/calendar.h"
#include "tavi/time/date_time.h"
#include "tavi/time/system_time.h"
#include "tavi/version.h"
