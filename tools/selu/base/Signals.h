// Ctrl-C and the like end the process at once; temporaries of unfinished outputs are removed first.
//
//   InstallSignalHandlers();
//   CTemporaryName name("/data/.selu-123-0.nrrd");   // from here on removed by a signal too
//   ... write the file ...; std::filesystem::rename(name.Path(), target);
//   // the end of its life removes the file, if it is still there
#pragma once

#include <filesystem>

namespace selu {

/// Ctrl-C, termination and hang-up remove the registered files and end the process with 128 plus
/// the signal's number (130 for Ctrl-C), whatever library call is running. A signal that the parent
/// had set to be ignored stays ignored. Writing beyond a file size limit becomes a common error. A
/// library that breaks down after memory has run out ends the process as any error does.
void InstallSignalHandlers();
/// For a process of its own, which has no part in the files of its parent.
void ResetSignalHandlers() noexcept;

/// Where the signal handler writes while standard error leads elsewhere.
void SetSignalOutput(int descriptor) noexcept;

/// A file that vanishes at the end of this object's life or when a signal ends the process.
class CTemporaryName {
public:
  /// Registers the name; throws CAppError when it is too long or too many are in use.
  explicit CTemporaryName(std::filesystem::path path);
  CTemporaryName(CTemporaryName const&) = delete;
  CTemporaryName& operator=(CTemporaryName const&) = delete;
  ~CTemporaryName();
  [[nodiscard]] std::filesystem::path const& Path() const noexcept { return m_Path; }

private:
  std::filesystem::path m_Path;
  int m_Slot;
};

} // namespace selu
