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

// The cell of settings or camera: any block that is not null says "held"; its fields are read from
// the record of the state.
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
    SortRuns();
    Judge();
  }

 private:
  using Row = StateMatrix::Row;

  void SceneRow(Part part, LONG key) {
    if (!parts_[IndexOf(part)]) return;
    const auto row = static_cast<std::uint32_t>(matrix_.rows_.size());
    matrix_.listed_[IndexOf(part)].assign(states_.size(), true);
    for (std::size_t i = 0; i < states_.size(); ++i) {
      const bool held = part == Part::Camera ? RecordedCamera(doc_, states_[i].record).has_value()
                                             : RecordedSettings(doc_, states_[i].record) != nullptr;
      AddRun(row, i, held ? KeptBody(states_[i].record, key) : nullptr);
      matrix_.holders_[IndexOf(part)] += held;
    }
    matrix_.rows_.push_back({part, 0});
  }

  void AddRun(std::size_t row, std::size_t state, const ContainerBody* record) {
    matrix_.runs_.push_back(
        {static_cast<std::uint32_t>(row), static_cast<std::uint32_t>(state), record});
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
    for (std::size_t part = 0; part < kParts; ++part) {
      if (!PartsOfList(list.key)[part]) continue;
      matrix_.listed_[part].assign(states_.size(), false);
      for (const std::size_t column : columns_) matrix_.listed_[part][column] = true;
    }
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

  // Elements whose records are not the same block in all states. Comparing neighbors is enough:
  // what is one block in each two neighbors is one block in all.
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
    NodeSet met;
    ForEachRecordBackwards(*lists_[0], met, [&](NodeId element, const ContainerBody* record) {
      const auto place = places.find(element);
      if (place != places.end()) AddRun(place->second, columns_[0], record);
    });
    for (std::size_t i = 1; i < lists_.size(); ++i) {
      for (const RecordPair& pair : UnsharedRecords(*lists_[i - 1], *lists_[i])) {
        const auto place = places.find(pair.element);
        if (place != places.end()) AddRun(place->second, columns_[i], pair.right);
      }
    }
  }

  // Runs come by state, cells are asked for by row.
  void SortRuns() {
    std::ranges::sort(matrix_.runs_, {},
                      [](const StateMatrix::Run& run) { return std::pair(run.row, run.state); });
    std::uint32_t next = 0;
    for (std::size_t row = 0; row < matrix_.rows_.size(); ++row) {
      const std::uint32_t begin = next;
      while (next < matrix_.runs_.size() && matrix_.runs_[next].row == row) ++next;
      matrix_.stretches_.push_back({begin, next});
    }
  }

  // Counts and compares, takes out the rows in which there is nothing to see, and sorts by part:
  // tags of several kinds come mixed.
  void Judge() {
    for (std::size_t part = 0; part < kParts; ++part) {
      std::size_t sum = 0;
      // A run lasts over any number of states; how many of them count is a difference of two sums.
      listedBefore_[part].push_back(0);
      for (const bool listed : matrix_.listed_[part]) listedBefore_[part].push_back(sum += listed);
    }
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < matrix_.rows_.size(); ++i) {
      Row& row = matrix_.rows_[i];
      Judge(row, i);
      const std::size_t holders = matrix_.holders_[IndexOf(row.part)];
      if (holders > 0 && (all_ || row.differs || row.knownBy < holders)) order.push_back(i);
    }
    std::ranges::stable_sort(order, {}, [this](std::size_t i) { return matrix_.rows_[i].part; });
    std::vector<Row> rows;
    std::vector<StateMatrix::Stretch> stretches;
    for (const std::size_t i : order) {
      rows.push_back(matrix_.rows_[i]);
      stretches.push_back(matrix_.stretches_[i]);
    }
    matrix_.rows_ = std::move(rows);
    matrix_.stretches_ = std::move(stretches);
  }

  void Judge(Row& row, std::size_t place) const {
    const std::span<const StateMatrix::Run> runs = matrix_.RunsOf(place);
    const std::vector<std::size_t>& listed = listedBefore_[IndexOf(row.part)];
    const StateMatrix::Run* before = nullptr;
    for (std::size_t i = 0; i < runs.size(); ++i) {
      if (!runs[i].record) continue;
      row.knownBy +=
          listed[i + 1 < runs.size() ? runs[i + 1].state : states_.size()] - listed[runs[i].state];
      if (before && !row.differs)
        row.differs =
            Differ(row.part, before->state, before->record, runs[i].state, runs[i].record);
      before = &runs[i];
    }
  }

  bool Differ(Part part, std::size_t a, const ContainerBody* one, std::size_t b,
              const ContainerBody* other) const {
    if (SameBodies(one, other, OwnIds::kIgnored)) return false;
    return !FieldsThatDiffer(FieldsOfCell(doc_, part, states_[a], one),
                             FieldsOfCell(doc_, part, states_[b], other))
                .empty();
  }

  StateMatrix& matrix_;
  const BaseDocument& doc_;
  const std::vector<StoredState>& states_;
  bool all_;
  Parts parts_;
  // By part, for each state how many before it have a list for it.
  std::array<std::vector<std::size_t>, kParts> listedBefore_;

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

const ContainerBody* StateMatrix::Cell(std::size_t row, std::size_t state) const {
  if (!listed_[IndexOf(rows_[row].part)][state]) return nullptr;
  const std::span<const Run> runs = RunsOf(row);
  const auto after = std::ranges::upper_bound(runs, state, {}, &Run::state);
  return after == runs.begin() ? nullptr : std::prev(after)->record;
}

Fields StateMatrix::CellFields(std::size_t row, std::size_t state) const {
  return FieldsOfCell(doc_, rows_[row].part, states_[state], Cell(row, state));
}

// The cell before is mostly the same block, which spares comparing the fields.
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
