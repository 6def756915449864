#include "program/desktop/LongEdit.h"

#include <algorithm>

#include "engine/outside/Outside.h"

namespace desktop {

namespace {

constexpr std::size_t kStepsBetweenNews = 256;

}  // namespace

LongEdit::LongEdit(host::BaseDocument& doc, const std::string& name, std::size_t steps)
    : name_(name), steps_(std::max<std::size_t>(1, steps)), scope_(doc, name) {}

bool LongEdit::Step() { return ++done_ % kStepsBetweenNews != 0 || Tell(); }

bool LongEdit::Reach(double share, std::size_t steps) {
  done_ = static_cast<std::size_t>(share * static_cast<double>(steps));
  return Tell();
}

bool LongEdit::Tell() {
  const double share = std::min(1.0, static_cast<double>(done_) / static_cast<double>(steps_));
  if (engine::Outside::Current().Progress(share, name_)) return true;
  scope_.Cancel();
  return false;
}

}  // namespace desktop
