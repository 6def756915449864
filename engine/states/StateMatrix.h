// StateMatrix: what each Stagemark says of each element, as a table: a row for each object, layer
// and recorded tag of the scene, a column for each state. It shares the records with the document
// and is of the moment at which it was made. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/states/FieldText.h"

namespace engine {

enum class MatrixRows {
  Differing,  // of which states say different things, or which some or all do not know
  All,
};

class StateMatrix {
 public:
  struct Row {
    Part part;
    NodeId element;
    std::size_t knownBy;  // states that hold it; 0: no state knows it
    bool differs;         // of those that hold it two say different things
  };

  // `states`: the columns; both outlive this. Elements in the order of the scene, by part: objects,
  // layers, tags by kind. Parts that no state holds anything of have no rows. Cost: the scene, and
  // per state what it does not share with the state before it.
  StateMatrix(const host::BaseDocument& doc, const std::vector<StoredState>& states,
              MatrixRows rows, Parts parts = AllParts());

  const std::vector<Row>& Rows() const { return rows_; }
  const std::vector<StoredState>& States() const { return *states_; }

  // Whether a state (its index) holds the element of a row.
  bool Holds(std::size_t row, std::size_t state) const { return Cell(row, state) != nullptr; }
  // Whether it says otherwise than the nearest state before it that holds the element.
  bool IsChanged(std::size_t row, std::size_t state) const;
  // What it says, as a person reads it: of an element with many fields those in which its states
  // differ, with their names when there are several. Empty where it does not hold the element.
  std::string Text(std::size_t row, std::size_t state) const;
  // All fields, for a program.
  Fields CellFields(std::size_t row, std::size_t state) const;

 private:
  const ContainerBody* Cell(std::size_t row, std::size_t state) const {
    return cells_[row * states_->size() + state];
  }
  std::vector<host::LONG> FieldsThatVary(std::size_t row) const;

  const host::BaseDocument& doc_;
  const std::vector<StoredState>* states_;
  std::vector<Row> rows_;
  std::vector<const ContainerBody*> cells_;  // row by row; null: not held
};

}  // namespace engine
