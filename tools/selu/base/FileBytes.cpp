#include "base/FileBytes.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <memory>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace selu {
namespace fs = std::filesystem;

std::string Lower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

std::string EndingOf(fs::path const& path) {
  std::string ending = Lower(path.extension().string());
  if (ending == ".gz") ending = Lower(path.stem().extension().string()) + ending;
  return ending;
}

std::uint64_t SizeOfReadable(fs::path const& path, fs::path const& header) {
  struct stat status = {};
  auto const fail = [&](std::string const& why) -> std::uint64_t {
    std::string const named =
        header.empty() || header == path
            ? Quoted(path)
            : Quoted(header) + ", whose pixels are in " + QuotedPart(path.native());
    throw CAppError("cannot read " + named + ": " + why);
  };
  if (::stat(path.c_str(), &status) != 0) return fail(SystemText(errno));
  if (S_ISDIR(status.st_mode)) return fail("it is a directory");
  if (!S_ISREG(status.st_mode)) return fail("it is not a regular file");
  if (::access(path.c_str(), R_OK) != 0) return fail(SystemText(errno));
  if (status.st_size == 0) return fail("the file is empty");
  return static_cast<std::uint64_t>(status.st_size);
}

std::string BeginningOf(fs::path const& path, std::size_t bytes) {
  std::ifstream file(path, std::ios::binary);
  std::string text(bytes, '\0');
  file.read(text.data(), static_cast<std::streamsize>(bytes));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return text;
}

std::vector<std::string> NamesIn(fs::path const& folder) {
  std::vector<std::string> names;
  auto const close = [](DIR* open) { ::closedir(open); };
  std::unique_ptr<DIR, decltype(close)> const open(::opendir(folder.c_str()), close);
  if (open == nullptr) return names;
  while (dirent const* const entry = ::readdir(open.get())) // NOLINT(concurrency-mt-unsafe)
    names.emplace_back(static_cast<char const*>(entry->d_name));
  std::erase_if(names, [](std::string const& name) { return name == "." || name == ".."; });
  return names;
}

} // namespace selu
