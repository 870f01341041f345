#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <string>

namespace ORVA {

struct CException::StContent {
  StContent(Impl::StExLocation const& where, char const* text)
      : timestamp(where.timestamp ? where.timestamp : ""), source(where.source ? where.source : ""),
        function(where.function ? where.function : ""),
        message(text ? text : ""), location{timestamp.c_str(), source.c_str(), function.c_str(),
                                            where.line, 0} {}
  StContent(StContent const&) = delete; // location points into the texts
  StContent& operator=(StContent const&) = delete;

  std::string timestamp, source, function, message;
  Impl::StExLocation location;
};

CException::CException(Impl::StExLocation const& location, char const* message)
    : m_Content(std::make_shared<StContent const>(location, message)) {}

CException::CException(char const* function, char const* message, char const* source)
    : CException(Impl::StExLocation{"", source, function, 0, 0}, message) {}

CException::~CException() = default;
CExBadParam::~CExBadParam() = default;

char const* CException::what() const noexcept { return m_Content->message.c_str(); }

Impl::StExLocation const& CException::Location() const noexcept { return m_Content->location; }

namespace Impl {

void Raise(StExLocation const& location, char const* message) {
  throw CException(location, message);
}
void Raise(StExLocation const& location, CString const& message) {
  throw CException(location, message.c_str());
}
void RaiseBadParam(StExLocation const& location, char const* message) {
  throw CExBadParam(location, message);
}
void RaiseBadParam(StExLocation const& location, CString const& message) {
  throw CExBadParam(location, message.c_str());
}

} // namespace Impl
} // namespace ORVA
