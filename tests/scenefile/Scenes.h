// Scenes and containers with one of everything that a scene file can hold, and how tests write and
// read them. Callers own them.
#pragma once

#include <memory>
#include <string>

#include "engine/scene/Ownership.h"
#include "host/BaseContainer.h"
#include "host/BaseDocument.h"
#include "host/BaseList2D.h"
#include "tests/support/SceneBytes.h"

namespace tests {

using Document = engine::OwnedDocument;

// Every type of value, empty entries, negative and far keys, own IDs at three depths, equal
// sub-containers, a link to `target`.
host::BaseContainer EveryValue(const host::BaseList2D* target);
// `count` entries, each holding a container of a link, two changing numbers and a fixed one, as
// stores of states have them.
host::BaseContainer Records(host::LONG count, host::LONG seed);

// One of every kind of element with every field set to something that is not its default.
Document EverythingScene();
Document EmptyScene();

// The document read; null and a test failure where reading fails.
Document Reopened(const std::string& bytes);
// The contents of one section; and the file with others, its frame right.
std::string ContentsOf(const std::string& bytes, const std::string& section);
std::string WithSection(const std::string& bytes, const std::string& section,
                        const std::string& contents);
// The message that reading fails with; "opened" where it does not.
std::string Refusal(const std::string& bytes);

}  // namespace tests
