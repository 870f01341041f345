// Standard output and the notes on standard error.
//
//   PrintOut(table);                 // throws CAppError when it cannot be written
//   PrintNote("warning: ...");       // "selu: warning: ..."
#pragma once

#include <string>
#include <string_view>

namespace selu {

class CAtomicFile;

/// Gives standard streams that are closed an end that cannot be used, so that no file or pipe takes
/// their numbers; using them is an error as before. To be called before anything is opened.
void OccupyClosedStreams() noexcept;
/// Writes to standard output; throws CAppError when not all of it arrives.
void PrintOut(std::string_view text);
/// Adds to the file, or to standard output where there is none.
void WriteOut(CAtomicFile* file, std::string_view text);
/// A line on standard error, begun with the program's name.
void PrintNote(std::string_view text) noexcept;
/// Whether a person watches standard error: a terminal that can move its cursor.
[[nodiscard]] bool StderrIsTerminal() noexcept;
/// Columns of the terminal that standard output is, or of a common page where it is none.
[[nodiscard]] int OutputColumns() noexcept;

/// One row of comma-separated values: fields that need it are quoted.
[[nodiscard]] std::string CsvField(std::string_view text);

} // namespace selu
