#include "source/Stagemarks/SMThread.h"

namespace stagemarks {

namespace {

// The host's number for a picture as the picture viewer would render it.
constexpr LONG kRenderFlags = 11;

}  // namespace

SMThread::~SMThread() {
  document_ = nullptr;
  bitmap_ = nullptr;
  End(TRUE);
}

void SMThread::Main() {
  RenderDocument(document_, settings_, nullptr, nullptr, bitmap_, kRenderFlags, Get());
}

}  // namespace stagemarks
