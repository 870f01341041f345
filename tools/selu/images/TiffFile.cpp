#include "images/TiffFile.h"

#include <cstdarg>
#include <new>
#include <stdexcept>

namespace selu {
namespace {

int NoteFailure(TIFF*, void* failed, char const*, char const*, va_list) {
  *static_cast<bool*>(failed) = true;
  return 1; // nobody else need hear of it
}
int Ignore(TIFF*, void*, char const*, char const*, va_list) { return 1; }

} // namespace

CTiffFile::CTiffFile(std::filesystem::path const& path, char const* mode) {
  std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> const options(TIFFOpenOptionsAlloc(),
                                                                             TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), NoteFailure, m_Failed.get());
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Ignore, nullptr);
  m_File.reset(TIFFOpenExt(path.c_str(), mode, options.get()));
  Require(m_File != nullptr);
}

void CTiffFile::Require(bool good) const {
  if (!good || *m_Failed) throw std::runtime_error("libtiff failed");
}

void CTiffFile::Close() {
  m_File.reset();
  Require(true);
}

} // namespace selu
