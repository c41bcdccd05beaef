//===- named_file_session.h - The frame of by-name file members -*- C++ -*-===//
//
// Every member that loads or saves through a file name (ExFile, ExTextFile and the
// packed forms) opens the file, works on it, closes it and, on failure, moves the
// cause to the name and puts a file that the open moved to its backup back in place.
// NamedFileSession is that frame, written once.
//
//===----------------------------------------------------------------------===//
#pragma once

#include <cstdint>

#include "tavi/core/string.h"
#include "tavi/file/file.h"

namespace tavi::internal {

class NamedFileSession {
 public:
  // Notes whether opening name with mode will move an existing file to its ".bck"
  // backup, so that a failure can undo it.
  NamedFileSession(XString16& name, uint16_t mode);

  // Open opens the file; on failure the cause is already in the name.
  bool Open(XWindow owner) { return file_.Open(name_, mode_, owner); }
  XFile& File() { return file_; }
  bool Reading() const { return (mode_ & kFileRead) != 0; }

  // Finish closes the file and returns ok when the work and the close succeeded.
  // Otherwise the file's error moves to the name, a handle that cannot be closed
  // cleanly is dropped without its unwritten bytes, the partial file is removed
  // and the backup takes its place again; the result is false.
  bool Finish(bool ok);

 private:
  XString16& name_;
  uint16_t mode_;
  bool had_file_;
  XFile file_;
};

}  // namespace tavi::internal
