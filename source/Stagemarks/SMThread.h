// SMThread: renders one document into one bitmap. It owns neither; both must outlive the work. Main
// thread, apart from Main itself.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

class SMThread : public C4DThread {
 public:
  SMThread(BaseDocument* doc, const BaseContainer& settings, BaseBitmap* bitmap)
      : document_(doc), bitmap_(bitmap), settings_(settings) {}
  ~SMThread() override;
  void Main() override;
  const CHAR* GetThreadName() override { return "Stagemarks Thread"; }

 private:
  BaseDocument* document_;
  BaseBitmap* bitmap_;
  BaseContainer settings_;  // parameters of render settings
};

}  // namespace stagemarks
