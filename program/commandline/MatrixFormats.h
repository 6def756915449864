// MatrixFormats: the table of what each Stagemark says of each element, as text for a terminal, as
// CSV (RFC 4180), as a page for a browser and as members for a program. Rows are written as they
// come. Nothing is owned. Main thread.
#pragma once

#include <string>

#include "engine/states/StateMatrix.h"
#include "program/commandline/Report.h"

namespace commandline {

// Lines that fit the terminal: what is too long is shortened, unless `whole`, and where not all
// columns have room beside one another, the table stands in several pieces.
void AddMatrixText(const host::BaseDocument& doc, const engine::StateMatrix& matrix, bool whole,
                   Report& report);
// Prints to standard output. A row begins with its part, the path and kind of the element, how many
// Stagemarks know it, and the names of those in which it changes.
void PrintMatrixCsv(const host::BaseDocument& doc, const engine::StateMatrix& matrix);
// Prints to standard output one file that needs no other, light or dark as the browser is.
void PrintMatrixPage(const host::BaseDocument& doc, const engine::StateMatrix& matrix,
                     const std::string& title);
// Puts the members "stagemarks" and "rows". They are made while the report is printed: the matrix
// must outlive that.
void PutMatrix(const host::BaseDocument& doc, const engine::StateMatrix& matrix, Report& report);

}  // namespace commandline
