// A figure is a row that is not a time: a number of bytes, of relocations, of pages. It is measured in a process of its
// own, so nothing that another row left in the heap or in a cache changes it.
//
// In the JSON file, a figure is a counter whose name is its unit. The scripts know the units that results.py lists.

#pragma once

#include <functional>
#include <string>
#include <vector>

// Registers a figure that a new process of this program measures: it calls `measure` and exits.
void FigureRow(const std::string& operation, const std::string& library, const char* unit,
               std::function<double()> measure);

// Measures a figure in this process and prints it. Returns false if no such figure is registered.
bool PrintFigure(const std::string& name);

// Runs a program in a new process, and returns the numbers that it prints. Ends this program if that fails.
std::vector<double> NumbersPrintedBy(const std::string& program, const std::string& argument);
