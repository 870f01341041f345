// An output file that appears whole or not at all.
//
//   CAtomicFile output("out/matrix.nrrd");       // refuses a missing folder before any work
//   ... write the file output.Temporary() ...
//   output.Commit();                             // now it stands under its name
//   // without Commit nothing is left behind
#pragma once

#include "base/FileLock.h"
#include "base/Signals.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace selu {

/// The bytes go to a temporary beside the target, with the target's ending, which takes the
/// target's name at last. A target that is no regular file (a device, a pipe) gets the finished
/// bytes written into it, and so does an open file: "-" (standard output), /dev/stdout, /dev/fd/3.
/// A symbolic link is followed. Temporaries are removed by signals, too; those of a process that
/// was killed by the next output in the same folder.
class CAtomicFile {
public:
  /// Throws CAppError when the folder is missing or not writable, the target is a directory, or an
  /// existing file is write-protected.
  explicit CAtomicFile(std::filesystem::path const& target);

  /// Where to write; the file exists and is empty.
  [[nodiscard]] std::filesystem::path const& Temporary() const noexcept {
    return m_Temporary->Path();
  }
  /// The name that the user gave.
  [[nodiscard]] std::filesystem::path const& Target() const noexcept { return m_Target; }
  /// Replaces the temporary's content by these bytes.
  void Write(std::string_view bytes);
  /// Adds these bytes to it.
  void Append(std::string_view bytes);
  /// Flushes the temporary to the disk and gives it the target's name; throws CAppError.
  void Commit();

private:
  friend void CommitAll(std::vector<CAtomicFile*> const& files, std::function<void()> const& print);
  void Flush() const;
  void CopyOut() const;
  void Rename();
  void TakeBack() noexcept;

  [[noreturn]] void Fail(int error) const;
  void WriteWith(int mode, std::string_view bytes);
  void CopyInto(int descriptor) const;
  void MakeTemporary(std::filesystem::path const& folder);

  std::filesystem::path m_Target;
  std::filesystem::path m_Resolved; // the target behind symbolic links
  int m_Descriptor = -1;            // of an open file that the target names
  bool m_Replaces = true;           // false: a device or the like, which is written into
  bool m_Renamed = false;
  CFileLock m_Lock, m_OldLock;           // of the temporary, and of what stood under the name
  std::unique_ptr<CTemporaryName> m_Old; // what stood under the name, until all is done
  std::unique_ptr<CTemporaryName> m_Temporary;
};

/// Commits all of them, or none: first all is made ready, what is no regular file gets its bytes,
/// and `print` writes to standard output where it is given; only then the others take their names,
/// and give them back where one cannot. Null pointers are passed over. Throws CAppError.
void CommitAll(std::vector<CAtomicFile*> const& files, std::function<void()> const& print = {});

/// The number of an open file that a path names, such as "-" or /dev/stdout; nothing for others.
[[nodiscard]] std::optional<int> DescriptorOf(std::filesystem::path const& path);

/// Refuses, with CAppError, an output that is this input, under whatever name.
void RefuseSameFile(std::filesystem::path const& output, std::filesystem::path const& input);

/// Whether two outputs, which need not be there yet, are one file under whatever names; a device is
/// none, and takes both.
[[nodiscard]] bool IsSameFile(std::filesystem::path const& a, std::filesystem::path const& b);

/// Writes all bytes to an open file; 0, or the error number.
[[nodiscard]] int WriteAll(int descriptor, std::string_view bytes) noexcept;

} // namespace selu
