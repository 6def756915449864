#include "engine/states/StateMatrix.h"

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"
#include "engine/states/RecordList.h"
#include "host/BaseObject.h"
#include "host/LayerObject.h"

namespace engine {

using host::BaseContainer;
using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

const ContainerBody* KeptBody(const BaseContainer& record, LONG key) {
  const BaseContainer* kept = record.GetContainerInstance(key);
  return kept ? ContainerAccess::Body(*kept) : nullptr;
}

Fields FieldsOfCell(const BaseDocument& doc, Part part, const StoredState& state,
                    const ContainerBody* cell) {
  if (!cell) return {};
  if (part == Part::Camera)
    return {{kFieldSceneCamera, LinkValue(RecordedCamera(doc, state.record).value_or(0))}};
  if (part != Part::RenderSettings) return FieldsOfRecord(doc, part, cell);
  const host::RenderData* settings = RecordedSettings(doc, state.record);
  return settings ? FieldsOfSettings(*settings) : Fields();
}

}  // namespace

// Finds the rows, then fills them. States that hold nothing of a list are left out there: what they
// do not record, they do not lack.
class MatrixBuilder {
 public:
  MatrixBuilder(StateMatrix& matrix, MatrixRows rows, Parts parts)
      : matrix_(matrix),
        doc_(matrix.doc_),
        states_(matrix.states_),
        all_(rows == MatrixRows::All),
        parts_(parts) {}

  void Run() {
    SceneRow(Part::RenderSettings, kStoredSettings);
    SceneRow(Part::Camera, kStoredCamera);
    for (const ListRow& list : kRecordLists) {
      if ((PartsOfList(list.key) & parts_).any()) AddList(list);
    }
    Judge();
    Sort();
  }

 private:
  using Row = StateMatrix::Row;

  void SceneRow(Part part, LONG key) {
    if (!parts_[IndexOf(part)]) return;
    std::vector<const ContainerBody*> cells;
    for (const StoredState& state : states_) {
      const bool held = part == Part::Camera ? RecordedCamera(doc_, state.record).has_value()
                                             : RecordedSettings(doc_, state.record) != nullptr;
      cells.push_back(held ? KeptBody(state.record, key) : nullptr);
      matrix_.holders_[IndexOf(part)] += held;
    }
    if (matrix_.holders_[IndexOf(part)] == 0) return;
    matrix_.rows_.push_back({part, 0});
    matrix_.cells_.insert(matrix_.cells_.end(), cells.begin(), cells.end());
  }

  void AddList(const ListRow& list) {
    lists_.clear();
    columns_.clear();
    for (std::size_t i = 0; i < states_.size(); ++i) {
      auto records = std::make_unique<RecordList>(states_[i].record, list.key, list.link);
      if (records->IsEmpty()) continue;
      lists_.push_back(std::move(records));
      columns_.push_back(i);
    }
    if (lists_.empty()) return;
    known_ = NodeSet();
    candidates_.clear();
    FindKnown(list.key);
    FindCandidates();
    AddRows(list.key);
    Fill();
  }

  // Which elements any state knows, and which parts each state holds: a look at each stretch of
  // records, once however many states share it.
  void FindKnown(LONG list) {
    std::unordered_map<const Entry*, std::pair<std::size_t, Parts>> seen;
    for (const auto& records : lists_) {
      Parts held;
      for (const RecordList::Stretch stretch : records->Stretches()) {
        const auto [place, isNew] = seen.try_emplace(stretch.data(), 0, Parts());
        if (isNew || place->second.first != stretch.size())
          place->second = {stretch.size(), PartsIn(list, *records, stretch)};
        held |= place->second.second;
      }
      for (std::size_t part = 0; part < kParts; ++part) matrix_.holders_[part] += held[part];
    }
  }

  Parts PartsIn(LONG list, const RecordList& records, RecordList::Stretch stretch) {
    Parts parts;
    for (const Entry& entry : stretch) {
      const NodeId id = records.ElementOf(RecordOf(entry));
      if (id == 0) continue;
      known_.Insert(id);
      BaseList2D* element = FindNode(&doc_, id);
      const PartRow* row = element ? PartOfElement(list, *element) : nullptr;
      if (row) parts.set(IndexOf(row->part));
    }
    return parts;
  }

  // What is not the same block in all states.
  void FindCandidates() {
    for (std::size_t i = 1; i < lists_.size(); ++i) {
      for (const RecordPair& pair : UnsharedRecords(*lists_[i - 1], *lists_[i]))
        candidates_.insert(pair.element);
    }
  }

  void AddRows(LONG list) {
    firstRow_ = matrix_.rows_.size();
    if (list == kStoredLayers) {
      for (const host::GeListNode* node = doc_.GetLayerObjectRoot()->GetFirst(); node;
           node = NextInTree(node))
        AddRow(Part::Layers, static_cast<const BaseList2D&>(*node));
    } else {
      for (const host::BaseObject* object = doc_.GetFirstObject(); object;
           object = NextInTree(object)) {
        if (list == kStoredObjects) {
          AddRow(Part::Objects, *object);
          continue;
        }
        for (const host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
          if (const PartRow* part = FindPartOfTag(tag->GetType())) AddRow(part->part, *tag);
        }
      }
    }
    matrix_.cells_.resize(matrix_.rows_.size() * states_.size());
  }

  void AddRow(Part part, const BaseList2D& element) {
    const NodeId id = IdOf(element);
    if (!parts_[IndexOf(part)] || matrix_.holders_[IndexOf(part)] == 0) return;
    if (all_ || candidates_.contains(id) || !known_.Has(id)) matrix_.rows_.push_back({part, id});
  }

  // The first state's records, then of each further state what is another block than before.
  void Fill() {
    std::unordered_map<NodeId, std::size_t> places;
    for (std::size_t row = firstRow_; row < matrix_.rows_.size(); ++row)
      places.emplace(matrix_.rows_[row].element, row);
    std::vector<const ContainerBody*> column(matrix_.rows_.size() - firstRow_);
    NodeSet met;
    ForEachRecordBackwards(*lists_[0], met, [&](NodeId element, const ContainerBody* record) {
      const auto place = places.find(element);
      if (place != places.end()) column[place->second - firstRow_] = record;
    });
    for (std::size_t i = 0; i < lists_.size(); ++i) {
      if (i > 0) {
        for (const RecordPair& pair : UnsharedRecords(*lists_[i - 1], *lists_[i])) {
          const auto place = places.find(pair.element);
          if (place != places.end()) column[place->second - firstRow_] = pair.right;
        }
      }
      for (std::size_t row = 0; row < column.size(); ++row)
        matrix_.cells_[(firstRow_ + row) * states_.size() + columns_[i]] = column[row];
    }
  }

  // Counts and compares, and takes out the rows in which there is nothing to see.
  void Judge() {
    std::vector<Row> rows;
    std::vector<const ContainerBody*> cells;
    for (std::size_t i = 0; i < matrix_.rows_.size(); ++i) {
      Row row = matrix_.rows_[i];
      const ContainerBody* const* first = matrix_.cells_.data() + i * states_.size();
      Judge(row, first);
      const bool someLack = row.knownBy < matrix_.holders_[IndexOf(row.part)];
      if (!all_ && !row.differs && !someLack) continue;
      rows.push_back(row);
      cells.insert(cells.end(), first, first + states_.size());
    }
    matrix_.rows_ = std::move(rows);
    matrix_.cells_ = std::move(cells);
  }

  void Judge(Row& row, const ContainerBody* const* cells) const {
    std::size_t before = states_.size();
    for (std::size_t i = 0; i < states_.size(); ++i) {
      if (!cells[i]) continue;
      ++row.knownBy;
      if (before < states_.size() && !row.differs)
        row.differs = Differ(row.part, before, cells[before], i, cells[i]);
      before = i;
    }
  }

  bool Differ(Part part, std::size_t a, const ContainerBody* one, std::size_t b,
              const ContainerBody* other) const {
    if (SameBodies(one, other, OwnIds::kIgnored)) return false;
    return !FieldsThatDiffer(FieldsOfCell(doc_, part, states_[a], one),
                             FieldsOfCell(doc_, part, states_[b], other))
                .empty();
  }

  // By part; tags of several kinds come mixed.
  void Sort() {
    std::vector<std::size_t> order(matrix_.rows_.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    const auto part = [this](std::size_t row) { return matrix_.rows_[row].part; };
    if (std::ranges::is_sorted(order, {}, part)) return;
    std::ranges::stable_sort(order, {}, part);
    std::vector<Row> rows;
    std::vector<const ContainerBody*> cells;
    for (const std::size_t i : order) {
      rows.push_back(matrix_.rows_[i]);
      const auto first = matrix_.cells_.begin() + static_cast<std::ptrdiff_t>(i * states_.size());
      cells.insert(cells.end(), first, first + static_cast<std::ptrdiff_t>(states_.size()));
    }
    matrix_.rows_ = std::move(rows);
    matrix_.cells_ = std::move(cells);
  }

  StateMatrix& matrix_;
  const BaseDocument& doc_;
  const std::vector<StoredState>& states_;
  bool all_;
  Parts parts_;

  // Of the list in hand.
  std::vector<std::unique_ptr<RecordList>> lists_;
  std::vector<std::size_t> columns_;  // the state of each
  NodeSet known_;
  std::unordered_set<NodeId> candidates_;
  std::size_t firstRow_ = 0;
};

StateMatrix::StateMatrix(const BaseDocument& doc, const std::vector<StoredState>& states,
                         MatrixRows rows, Parts parts)
    : doc_(doc), states_(states) {
  MatrixBuilder(*this, rows, parts).Run();
}

Fields StateMatrix::CellFields(std::size_t row, std::size_t state) const {
  return FieldsOfCell(doc_, rows_[row].part, states_[state], Cell(row, state));
}

bool StateMatrix::IsChanged(std::size_t row, std::size_t state) const {
  if (!Holds(row, state)) return false;
  for (std::size_t before = state; before-- > 0;) {
    if (!Holds(row, before)) continue;
    return Cell(row, before) != Cell(row, state) &&
           !FieldsThatDiffer(CellFields(row, before), CellFields(row, state)).empty();
  }
  return false;
}

std::vector<LONG> StateMatrix::FieldsThatVary(std::size_t row) const {
  std::vector<LONG> fields;
  std::size_t before = states_.size();
  for (std::size_t i = 0; i < states_.size(); ++i) {
    if (!Holds(row, i)) continue;
    if (before < states_.size() && Cell(row, before) != Cell(row, i)) {
      for (const FieldChange& change :
           FieldsThatDiffer(CellFields(row, before), CellFields(row, i))) {
        if (std::ranges::find(fields, change.field) == fields.end()) fields.push_back(change.field);
      }
    }
    before = i;
  }
  return fields;
}

std::string StateMatrix::Text(std::size_t row, std::size_t state) const {
  if (!Holds(row, state)) return "";
  const Part part = rows_[row].part;
  const Fields fields = CellFields(row, state);
  const bool plain = part == Part::Camera || part == Part::Materials;
  const std::vector<LONG> vary = rows_[row].differs ? FieldsThatVary(row) : std::vector<LONG>();
  const ElementChange change{part, ChangeKind::Changed, rows_[row].element, 0, {}};
  const LONG type = TypeForFields(doc_, change);
  std::string text;
  for (const FieldNow& field : fields) {
    if (!plain && std::ranges::find(vary, field.field) == vary.end()) continue;
    text += text.empty() ? "" : ", ";
    if (!plain) text += FieldLabel(type, field.field) + " ";
    text += FieldValueText(doc_, type, field.field, field.value);
  }
  return text.empty() ? (rows_[row].differs ? "nothing" : "held") : text;
}

}  // namespace engine
