#include "engine/scenefile/Elements.h"

#include <algorithm>

#include "host/BaseObject.h"
#include "host/GvNode.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"

namespace engine {
namespace {

constexpr std::uint64_t kRowBytes = 400;  // about what an element takes in memory
constexpr std::uint64_t kFlagsEnd = 1u << 9;

// Checks of one table. Afterwards the builder may follow every number in it without asking.
class TableCheck {
 public:
  TableCheck(const ElementTables& tables, ElementSection section, const ElementBounds& bounds,
             const Cursor& in)
      : tables_(tables), table_(tables[section]), section_(section), bounds_(bounds), in_(in) {}

  void Run() const {
    CheckPlaces();
    CheckLongs(in_, table_.types, "a type");
    CheckLongs(in_, table_.bits, "a set of bits");
    CheckBelow(in_, table_.names, bounds_.texts, "a name");
    CheckBelow(in_, table_.data, bounds_.containers, "a data container");
    CheckTypes();
    if (section_ == kLayerRows) CheckLayers();
    if (section_ == kObjectRows) CheckObjects();
    if (section_ == kNodeRows) CheckNodes();
  }

 private:
  // Rising owners keep the rows of one owner together, and a depth of at most one more than the row
  // before makes pre-order the only order: a row hangs below the last one of the depth above.
  void CheckPlaces() const {
    for (std::size_t i = 0; i < table_.Rows(); ++i) {
      const bool sameOwner = i > 0 && table_.owners[i] == table_.owners[i - 1];
      if (i > 0 && table_.owners[i] < table_.owners[i - 1]) in_.Refuse("owners do not rise");
      if (!IsOwner(table_.owners[i], table_.firstRow + i))
        in_.Refuse("an owner is no element that can own one");
      const std::uint64_t deepest =
          kElementRules[section_].tree && sameOwner ? table_.depths[i - 1] + 1 : 0;
      if (table_.depths[i] > deepest) in_.Refuse("an element hangs below none");
    }
  }

  // Owners have lower rows than what they own, so that nothing owns itself.
  bool IsOwner(std::uint64_t owner, std::uint64_t row) const {
    const auto isIn = [&](ElementSection section) {
      return owner >= tables_[section].firstRow && owner < tables_[section].EndRow();
    };
    switch (section_) {
      case kPostRows:
      case kPassRows:
        return isIn(kRenderRows);
      case kTagRows:
        return isIn(kObjectRows);
      case kNodeRows:
        return isIn(kTagRows) &&
               tables_[kTagRows].types[owner - tables_[kTagRows].firstRow] == host::Texpresso;
      case kShaderRows:
        return owner < row;
      default:
        return owner == 0;
    }
  }

  // Elsewhere any type is taken: elements of plug-ins that are not there keep theirs.
  void CheckTypes() const {
    const host::LONG only = section_ == kLayerRows    ? host::Olayer
                            : section_ == kRenderRows ? host::Rbase
                                                      : 0;
    if (only == 0) return;
    for (const std::uint64_t type : table_.types)
      if (type != static_cast<std::uint64_t>(only))
        in_.Refuse("an element has a type that there is not");
  }

  void CheckLayers() const {
    CheckBelow(in_, table_.more[kLayerFlags], kFlagsEnd, "a set of layer flags");
    CheckBelow(in_, table_.more[kLayerColor], bounds_.vectors, "a color");
  }

  void CheckObjects() const {
    CheckBelow(in_, table_.more[kEditorMode], host::MODE_UNDEF + 1, "an editor mode");
    CheckBelow(in_, table_.more[kRenderMode], host::MODE_UNDEF + 1, "a render mode");
    CheckBelow(in_, table_.more[kDeformMode], 2, "a deform mode");
    CheckBelow(in_, table_.more[kMatrix], bounds_.matrices + 1, "a matrix");
    CheckBelow(in_, table_.more[kMesh], bounds_.meshes + 1, "a mesh");
  }

  // Per owner the master, then the root, then nodes below the root.
  void CheckNodes() const {
    for (std::size_t i = 0; i < table_.Rows(); ++i) {
      const bool master = i == 0 || table_.owners[i] != table_.owners[i - 1];
      const bool root = !master && table_.depths[i - 1] == 0;
      const std::uint64_t depth = table_.depths[i];
      if (master ? depth != 0 : root ? depth != 1 : depth < 2)
        in_.Refuse("an expression has two masters or roots");
      if ((master || root) && table_.types[i] != host::GVbase)
        in_.Refuse("a node master or root has a strange type");
    }
  }

  const ElementTables& tables_;
  const ElementTable& table_;
  ElementSection section_;
  const ElementBounds& bounds_;
  const Cursor& in_;
};

}  // namespace

std::string ElementTable::Contents(const ElementRule& rule,
                                   std::span<const std::uint32_t> numbers) const {
  std::string out;
  PutVarint(out, Rows());
  for (const ColumnValues* column :
       {&owners, &depths, &types, &ids, &names, &bits, &nbits, &layers})
    PutInts(out, *column);
  ColumnValues numbered(Rows());
  std::ranges::transform(data, numbered.begin(),
                         [&](std::uint64_t container) { return numbers[container]; });
  PutInts(out, numbered);
  for (std::size_t i = 0; i < rule.more; ++i) PutInts(out, more[i]);
  return out;
}

void ReadElements(ElementTables& tables, ElementSection section, std::string_view contents,
                  const ElementBounds& bounds, Budget& budget) {
  const ElementRule& rule = kElementRules[section];
  ElementTable& table = tables[section];
  table.firstRow = section == 0 ? 1 : tables[section - 1].EndRow();
  Cursor in(contents, rule.name, budget);
  const std::size_t rows = in.Rows(kRowBytes);
  for (ColumnValues* column : {&table.owners, &table.depths, &table.types, &table.ids, &table.names,
                               &table.bits, &table.nbits, &table.layers, &table.data})
    *column = TakeInts(in, rows);
  for (std::size_t i = 0; i < rule.more; ++i) table.more[i] = TakeInts(in, rows);
  in.End();
  TableCheck(tables, section, bounds, in).Run();
}

void CheckIdentities(const ElementTables& tables, std::uint64_t document) {
  ColumnValues ids{document};
  for (const ElementTable& table : tables)
    ids.insert(ids.end(), table.ids.begin(), table.ids.end());
  // Elements made in one go, and in the order of the file, need no sorting.
  if (!std::ranges::is_sorted(ids)) std::ranges::sort(ids);
  if (ids.front() == 0) throw Damage{"The file is damaged: an element has no identity."};
  if (std::ranges::adjacent_find(ids) != ids.end())
    throw Damage{"The file is damaged: two elements have the same identity."};
}

}  // namespace engine
