// A document, or the part of it that Stagemarks record, as text: one line per fact, in scene order,
// so that two states can be compared and a difference read by a person. Used by tests and by the
// command line. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/scene/ValueText.h"
#include "host/BaseDocument.h"

namespace engine {

// Everything a document holds, identities replaced by running numbers so that a saved and opened
// copy dumps alike.
std::string DumpDocument(const host::BaseDocument& doc);
// DumpDocument piece by piece, each ending with a line: the text of a large scene is far too much
// to keep.
// False when the sink stopped it.
bool DumpDocument(const host::BaseDocument& doc, const TextSink& sink);

// The recorded state as far as it can be seen: active render settings' parameters, scene camera,
// modes of every object, materials of texture tags, data of the recorded tag types, flags of every
// layer. The element stores are left out.
std::string DumpState(const host::BaseDocument& doc);

// Lines of `a` and `b` that differ, as "- was" and "+ is" lines, at most `most` of each; empty for
// equal texts.
std::vector<std::string> DumpDifference(const std::string& a, const std::string& b,
                                        std::size_t most = 20);

}  // namespace engine
