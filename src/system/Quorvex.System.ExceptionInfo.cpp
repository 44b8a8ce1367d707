#include "Quorvex.System.ExceptionInfo.hpp"

#include <cxxabi.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <typeindex>
#include <typeinfo>

#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::System::ExceptionInfo {

using Rtl::Exceptions::Exception;
using Rtl::Objects::TClassInfo;

namespace {

// The readable C++ name of `type`. Both lanes build with g++, whose ABI
// library demangles names the same way everywhere.
std::string DemangledName(const std::type_info& type) {
  int status = 0;
  char* readable = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
  std::string name = (status == 0 && readable != nullptr) ? readable : type.name();
  std::free(readable);
  // std::throw_with_nested throws the standard library's wrapper deriving
  // from the thrown type; the exception's own class is the wrapped one.
  constexpr std::string_view kNestedWrapper = "std::_Nested_exception<";
  if (name.starts_with(kNestedWrapper) && name.ends_with('>'))
    name = name.substr(kNestedWrapper.size(), name.size() - kNestedWrapper.size() - 1);
  return name;
}

// Class information for exception types outside the library's hierarchy:
// one record per C++ type, its namespaces joined with "." as the unit
// name. Made on first capture and kept for the process's life, like the
// class information of the library's own classes.
class TForeignClasses {
 public:
  TClass ClassOf(const std::type_info& type) {
    std::lock_guard<std::mutex> guard(FLock);
    auto [it, added] = FEntries.try_emplace(std::type_index(type));
    TEntry& entry = it->second;
    if (added) {
      SplitName(DemangledName(type), entry.UnitName, entry.ClassName);
      entry.Info = std::make_unique<TClassInfo>(entry.ClassName, entry.UnitName, nullptr, nullptr);
    }
    return entry.Info.get();
  }

 private:
  struct TEntry {
    UnicodeString ClassName;
    UnicodeString UnitName;
    std::unique_ptr<TClassInfo> Info;  // views the two names above
  };

  // "a::b::C<x::Y>" gives unit "a.b" and class "C<x::Y>".
  static void SplitName(const std::string& name, UnicodeString& unitName, UnicodeString& className) {
    size_t split = std::string::npos;
    int depth = 0;
    for (size_t i = 0; i + 1 < name.size(); ++i) {
      if (name[i] == '<') ++depth;
      if (name[i] == '>') --depth;
      if (depth == 0 && name[i] == ':' && name[i + 1] == ':') split = i;
    }
    if (split == std::string::npos) {
      className = Rtl::Strings::Utf8ToUtf16(name);
      return;
    }
    className = Rtl::Strings::Utf8ToUtf16(name.substr(split + 2));
    unitName = Rtl::Strings::ReplaceAll(Rtl::Strings::Utf8ToUtf16(name.substr(0, split)), u"::", u".");
  }

  std::mutex FLock;
  std::map<std::type_index, TEntry> FEntries;  // nodes never move: the views stay valid
};

TClass ForeignClassOf(const std::type_info& type) {
  // Never destroyed: a class reference may be compared in late shut-down.
  static TForeignClasses* const classes = new TForeignClasses();
  return classes->ClassOf(type);
}

}  // namespace

TExceptionInfo::TExceptionInfo(const std::exception_ptr& error) {
  if (!error) throw Rtl::Exceptions::EArgumentException(u"No exception to capture");
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& raised) {
    CaptureFrom(raised);
  } catch (...) {
    // Not a std::exception: only its type is known.
    FClass = ForeignClassOf(*abi::__cxa_current_exception_type());
  }
}

TExceptionInfo::TExceptionInfo(const std::exception& error) { CaptureFrom(error); }

void TExceptionInfo::CaptureFrom(const std::exception& error) {
  std::exception_ptr inner;
  if (const auto* own = dynamic_cast<const Exception*>(&error)) {
    FClass = own->ClassType();
    FMessage = own->Message();
    FStackTrace = own->StackTrace();
    inner = own->InnerException();
  } else {
    FClass = ForeignClassOf(typeid(error));
    FMessage = Rtl::Strings::Utf8ToUtf16(error.what());
  }
  if (!inner)
    if (const auto* nested = dynamic_cast<const std::nested_exception*>(&error)) inner = nested->nested_ptr();
  if (inner) FInnerInfo = Rtl::Objects::CreateObject<TExceptionInfo>(inner);
}

}  // namespace Quorvex::System::ExceptionInfo
