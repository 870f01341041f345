#include "base/SharedBuffer.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <cerrno>
#include <new>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

namespace selu {

CSharedBuffer::CSharedBuffer(std::size_t bytes)
    : m_Descriptor(::memfd_create("selu", MFD_CLOEXEC)), m_Bytes(bytes) {
  bool const sized = m_Descriptor >= 0 && ::ftruncate(m_Descriptor, static_cast<off_t>(bytes)) == 0;
  int const error = errno;
  if (sized) {
    Map();
    return;
  }
  if (m_Descriptor >= 0) ::close(m_Descriptor);
  if (error == ENOMEM || error == EINVAL) throw std::bad_alloc();
  throw CAppError("no memory of " + BytesText(static_cast<double>(bytes)) +
                  " can be had: " + SystemText(error));
}

CSharedBuffer::CSharedBuffer(int descriptor, std::size_t bytes)
    : m_Descriptor(descriptor), m_Bytes(bytes) {
  Map();
}

void CSharedBuffer::Map() {
  auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  m_Mapped = (m_Bytes + page - 1) / page * page + page;
  // A place that ends in a forbidden page, and over its beginning the memory.
  void* const place =
      ::mmap(nullptr, m_Mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  bool good = place != MAP_FAILED;
  if (good && m_Bytes > 0)
    good = ::mmap(place, m_Mapped - page, PROT_READ | PROT_WRITE,
                  MAP_FIXED | (m_Descriptor >= 0 ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS),
                  m_Descriptor, 0) != MAP_FAILED;
  if (good) {
    m_Begin = static_cast<std::byte*>(place);
    return;
  }
  if (place != MAP_FAILED) ::munmap(place, m_Mapped);
  if (m_Descriptor >= 0) ::close(m_Descriptor);
  throw std::bad_alloc();
}

CSharedBuffer::CSharedBuffer(CSharedBuffer&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)),
      m_Begin(std::exchange(other.m_Begin, nullptr)), m_Bytes(std::exchange(other.m_Bytes, 0)),
      m_Mapped(std::exchange(other.m_Mapped, 0)) {}

CSharedBuffer& CSharedBuffer::operator=(CSharedBuffer&& other) noexcept {
  std::swap(m_Descriptor, other.m_Descriptor);
  std::swap(m_Begin, other.m_Begin);
  std::swap(m_Bytes, other.m_Bytes);
  std::swap(m_Mapped, other.m_Mapped);
  return *this;
}

CSharedBuffer::~CSharedBuffer() {
  if (m_Begin != nullptr) ::munmap(m_Begin, m_Mapped);
  if (m_Descriptor >= 0) ::close(m_Descriptor);
}

} // namespace selu
