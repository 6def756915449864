// ChangeLists: what two states say differently, or one says of the scene, as lines for a person and
// as members of the object for a program: by part, each element with its values, what is not worth
// a screen left out and counted. Nothing is owned. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/Difference.h"
#include "program/commandline/Report.h"

namespace commandline {

// How many elements of one part and kind, and how many values of one element, are listed unless all
// are asked for.
inline constexpr std::size_t kMostListed = 8;
inline constexpr std::size_t kMostValues = 6;

struct Sides {
  const host::BaseDocument& leftDoc;
  const host::BaseDocument& rightDoc;
  std::string left;  // as it stands in a sentence: "\"Day\"", "the scene"
  std::string right;
  bool whole = false;  // every element with every value, nothing shortened
};

// One line of a list in columns. The same element below itself is not named again.
struct FactRow {
  std::string element;
  std::string field;
  std::string value;
};
// Lines in columns that fit the terminal, unless `whole`; a long path loses its beginning.
void AddRows(const std::vector<FactRow>& rows, bool whole, Report& report, std::size_t indent = 2);
// "  label    text", the text broken at blanks.
void AddLabeled(Report& report, const std::string& label, const std::string& text);

// At most `width` columns of a path: its end says more than its beginning.
std::string WithoutBeginning(const std::string& path, std::size_t width);

// The path of the element of a change.
std::string PlaceOf(const Sides& sides, const engine::ElementChange& change);
// "Off -> On" of a change, "Off" where only one side says something.
std::string ValuesText(const Sides& sides, const engine::ElementChange& change,
                       const engine::FieldChange& field, std::size_t width);

// Adds rows with the values of the left side, without those of the right one.
void AppendValuesLeft(const Sides& sides, const engine::ElementChange& change,
                      std::vector<FactRow>& rows);

// Fills in the fields of the listed changes in a difference from CompareWithScene: the first of
// each part and of `others` (indices).
void TellListed(const host::BaseDocument& doc, const host::BaseContainer& record,
                const engine::CompareOptions& options, const std::vector<std::size_t>& others,
                engine::Difference& toScene);

// A line a part: "  Objects   8 changed, 1 only in "Day"".
void AddCounts(const Sides& sides, const engine::Difference& difference, Report& report);
// The elements, part by part; false when some were left out.
bool AddChanges(const Sides& sides, const engine::Difference& difference, Report& report);
// Puts the members "counts" and "differences". They are made while the report is printed: both
// arguments must outlive that.
void PutChanges(const Sides& sides, const engine::Difference& difference, Report& report);
// A value for a program, as its type has it: a time in seconds, a link as the path of its element.
JsonValue RawValue(const host::BaseDocument& doc, const host::GeData& value);
// Members of "counts": how many elements of each part, by its word.
JsonMembers CountsOf(const engine::Difference& difference);
// Members of one change: part, change, element, kind and fields.
JsonMembers MembersOf(const Sides& sides, const engine::ElementChange& change);

}  // namespace commandline
