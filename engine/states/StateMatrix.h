// StateMatrix: what each Stagemark says of each element, as a table: a row for the render settings,
// the camera and each object, layer and tag of the scene that is recorded, a column for each state.
// It shares the records with the document and is of the moment at which it was made. Main thread.
#pragma once

#include <array>
#include <span>
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
    NodeId element;           // 0 for render settings and camera
    std::size_t knownBy = 0;  // states that hold it; 0: no state knows it
    bool differs = false;     // of those that hold it two say different things
  };

  // `states`: the columns; both outlive this. By part, elements in the order of the scene. Parts
  // that no state holds anything of have no rows. Cost: the scene, and per state what it does not
  // share with the state before it.
  StateMatrix(const host::BaseDocument& doc, const std::vector<StoredState>& states,
              MatrixRows rows, Parts parts = AllParts());

  const std::vector<Row>& Rows() const { return rows_; }
  const std::vector<StoredState>& States() const { return states_; }
  // States that hold anything of a part.
  std::size_t HoldersOf(Part part) const { return holders_[IndexOf(part)]; }

  // Whether a state (its index) holds the element of a row.
  bool Holds(std::size_t row, std::size_t state) const { return Cell(row, state) != nullptr; }
  // Whether it says otherwise than the nearest state before it that holds the element.
  bool IsChanged(std::size_t row, std::size_t state) const;
  // A cell for a person: the fields in which the states differ, with their names, of camera and
  // materials the value alone; "held" where all states that hold the element agree; empty where
  // this one does not hold it.
  std::string Text(std::size_t row, std::size_t state) const;
  // All fields of a cell, for a program.
  Fields CellFields(std::size_t row, std::size_t state) const;

 private:
  friend class MatrixBuilder;
  // The record of all states from `state` to the next run of the row; null: they do not hold the
  // element.
  struct Run {
    std::uint32_t row;
    std::uint32_t state;
    const ContainerBody* record;
  };
  // The runs of a row.
  struct Stretch {
    std::uint32_t begin;
    std::uint32_t end;
  };
  const ContainerBody* Cell(std::size_t row, std::size_t state) const;
  std::span<const Run> RunsOf(std::size_t row) const {
    const Stretch runs = stretches_[row];
    return std::span(runs_).subspan(runs.begin, runs.end - runs.begin);
  }
  std::vector<host::LONG> FieldsThatVary(std::size_t row) const;

  const host::BaseDocument& doc_;
  const std::vector<StoredState>& states_;
  std::vector<Row> rows_;
  std::array<std::size_t, kParts> holders_{};
  // For each part the states that hold a list with its records at all.
  std::array<std::vector<bool>, kParts> listed_;
  std::vector<Stretch> stretches_;  // row by row
  std::vector<Run> runs_;
};

}  // namespace engine
