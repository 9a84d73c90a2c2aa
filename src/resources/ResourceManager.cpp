#include <cstdio>
#include <string>

#include "automation/coerce.hpp"
#include "files/fileutils.hpp"
#include "frame/state.hpp"
#include "frame/traps.hpp"
#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"
#include "orvogeneric/error.hpp"
#include "orvogeneric/font.hpp"
#include "platform/locale_info.hpp"
#include "resources/catalogue.hpp"
#include "resources/resource_manager.hpp"
#include "runtime/errors.hpp"
#include "runtime/strings.hpp"
#include "text/paths.hpp"
#include "text/strings.hpp"

namespace orvo {

namespace {

constexpr std::u16string_view kSource = u"orvoGeneric DLL";
constexpr std::int32_t kBritishEnglish = 2057;
// The platform's string loader is handed a buffer of this many characters.
constexpr std::size_t kStringBufferChars = 4096;

[[noreturn]] void raise(std::uint32_t number, const String& description) {
  throw Error(static_cast<std::int32_t>(number), description, String(kSource));
}

// The font's properties: a FontObject directly, anything else by late binding.
class FontAccess {
 public:
  explicit FontAccess(Object& font) : font_(font), typed_(dynamic_cast<FontObject*>(&font)) {}

  String name() {
    return typed_ != nullptr ? typed_->Name() : automation::coerce<String>(get("Name"));
  }
  void name(const String& value) {
    if (typed_ != nullptr) return typed_->Name(value);
    let("Name", Variant(value));
  }
  Currency size() {
    return typed_ != nullptr ? typed_->Size() : automation::coerce<Currency>(get("Size"));
  }
  void size(float value) {
    const Currency c = Currency::fromDouble(value);
    if (typed_ != nullptr) return typed_->Size(c);
    let("Size", Variant(c));
  }
  void bold(VBool value) {
    if (typed_ != nullptr) return typed_->Bold(value);
    let("Bold", Variant(value));
  }

 private:
  Variant get(std::string_view property) {
    return automation::invoke(font_, property, {}, {}, automation::MemberKind::PropertyGet).result;
  }
  void let(std::string_view property, Variant value) {
    std::vector<Variant> args;
    args.push_back(std::move(value));
    automation::invoke(font_, property, std::move(args), {}, automation::MemberKind::PropertyLet);
  }

  Object& font_;
  FontObject* typed_;
};

// The font steps run with errors ignored, each step on its own, unless the library is being
// debugged: a host font that refuses a name still gets its size and boldness.
template <class Step>
void resumeNext(Step&& step) {
  if (frame::InDevelopmentMode()) return step();
  try {
    step();
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch)
  }
}

}  // namespace

namespace resources {

std::int32_t fallbackLocale(std::int32_t lcid) {
  if (lcid == 1028) return 2052;
  if (lcid == 1033) return kBritishEnglish;
  return lcid;
}

String satelliteFileName(const String& stub, std::int32_t lcid) {
  char hex[16];
  std::snprintf(hex, sizeof hex, "%X", static_cast<std::uint32_t>(lcid));
  return stub + fromUtf8(hex) + u".dll";
}

}  // namespace resources

struct ResourceManager::Impl {
  resources::SatelliteHandle primary;
  resources::SatelliteHandle fallback;
  std::int32_t localeID = 0;
  String fileStub;
  String searchDirectory;
  bool strict = false;
  VBool allowBoldInFarEast = VBool::False;
  VBool increasePointSizeInFarEast = VBool::True;
  VBool changeFontNameInFarEast = VBool::True;
  String fontNameInFarEast = u"Arial";

  [[nodiscard]] String fileName(std::int32_t lcid) const {
    return resources::satelliteFileName(fileStub, lcid);
  }
  // Loading one satellite into a handle: what it held goes first.
  void load(resources::SatelliteHandle& handle, std::int32_t lcid) const {
    handle.reset();
    handle = resources::loadSatellite(searchDirectory + fileName(lcid));
  }
  [[nodiscard]] std::optional<String> read(const resources::SatelliteHandle& handle,
                                           std::int32_t id) const {
    auto text =
        resources::loadSatelliteString(*handle, static_cast<std::uint16_t>(id), kStringBufferChars);
    if (!text) return std::nullopt;
    return runtime::Replace(*text, u"%n", u"\r\n");  // "%n" is a line break
  }
};

void ResourceManager::Class_Initialize() { impl_ = std::make_shared<Impl>(); }

void resources::Initialise(ResourceManager& manager, const String& fileStub,
                           const String& searchDirectory, std::int32_t localeID) {
  ResourceManager::Impl& m = manager.impl();
  if (!searchDirectory.empty()) {
    m.searchDirectory = text::PathWithBackslash(searchDirectory);
    if (!isTrue(files::DirExists(m.searchDirectory))) {
      raise(resources::kErrorNoSearchDirectory,
            resources::LibraryMessage(317, {Variant(m.searchDirectory)}));
    }
  } else {
    m.searchDirectory.clear();
  }
  m.fileStub = runtime::Trim(fileStub);
  if (m.fileStub.empty()) raise(resources::kErrorNoFileStub, resources::LibraryString(324));
  m.load(m.fallback, kBritishEnglish);
  try {
    if (localeID != -1) {
      manager.LocaleID(localeID);
    } else {
      manager.LocaleID(static_cast<std::int32_t>(platform::userDefaultLCID()));
      m.strict = false;
    }
  } catch (...) {
    const Error e = frame::asError(std::current_exception());
    raise(static_cast<std::uint32_t>(e.number()), e.description() + u"\r\nInitialise");
  }
}

void ResourceManager::LocaleID(std::int32_t value) {
  Impl& m = *impl_;
  m.strict = true;
  if (value == m.localeID) return;
  m.localeID = value;
  m.primary.reset();
  bool loaded = false;
  if (value == kBritishEnglish) {
    loaded = m.fallback != nullptr;
  } else {
    m.load(m.primary, value);
    if (!m.primary) m.load(m.primary, resources::fallbackLocale(value));
    loaded = m.primary != nullptr;
  }
  if (loaded) return;
  const String path = m.searchDirectory + m.fileName(value);
  const bool exists = isTrue(files::FileExists(path, VBool::False));
  raise(resources::kErrorSatelliteNotLoaded,
        resources::LibraryMessage(exists ? 304 : 303, {Variant(path)}));
}

std::int32_t ResourceManager::LocaleID() { return impl_->localeID; }

String ResourceManager::LoadResString(std::int32_t ResourceID) {
  const Impl& m = *impl_;
  if (ResourceID < 1 || ResourceID >= 65536) {
    raise(resources::kErrorResourceIDOutOfRange,
          resources::LibraryMessage(322, {Variant(runtime::DecimalText(ResourceID))}));
  }
  if (m.primary) {
    if (auto text = m.read(m.primary, ResourceID)) return std::move(*text);
    if (m.strict) {
      raise(resources::kErrorStringNotFound,
            resources::LibraryMessage(
                325, {Variant(runtime::DecimalText(ResourceID)), Variant(m.fileName(m.localeID))}));
    }
  }
  if (m.fallback) {
    if (auto text = m.read(m.fallback, ResourceID)) return std::move(*text);
    raise(resources::kErrorStringNotFound,
          resources::LibraryMessage(325, {Variant(runtime::DecimalText(ResourceID)),
                                          Variant(m.fileName(kBritishEnglish))}));
  }
  // The one error of the class raised without the library's source.
  throw Error(static_cast<std::int32_t>(resources::kErrorSatelliteNotLoaded),
              u"LoadResString: no satellite DLLs loaded.");
}

String ResourceManager::ExpandTranslation(std::int32_t TemplateID, SafeArray& ArgumentList) {
  return text::ExpandString_Worker(LoadResString(TemplateID), ArgumentList);
}

void ResourceManager::ModifyFontForLocale(std::shared_ptr<Object>& objFont) {
  const Impl& m = *impl_;
  if (!isTrue(FarEasternLocale())) return;
  if (!objFont) {
    // Nothing in place of a font: every step fails, and failures are ignored.
    resumeNext([] { runtime::raise(runtime::errObjectNotSet); });
    return;
  }
  FontAccess font(*objFont);
  if (isTrue(m.changeFontNameInFarEast)) {
    resumeNext([&] {
      if (font.name() != m.fontNameInFarEast) font.name(m.fontNameInFarEast);
    });
  }
  if (isTrue(m.increasePointSizeInFarEast)) {
    resumeNext([&] {
      // The steps are a Single's arithmetic on Double literals: each sum is rounded back to
      // single precision when stored. A font snaps to its own sizes, so the size is raised in
      // small steps until it has grown by 0.75 point, never asking above S + 1.6.
      const float start = static_cast<float>(font.size().toDouble());
      auto target = static_cast<float>(static_cast<double>(start) + 0.8);
      while (static_cast<double>(target) <= static_cast<double>(start) + 1.6 &&
             static_cast<double>(static_cast<float>(font.size().toDouble())) <
                 static_cast<double>(start) + 0.75) {
        font.size(target);
        target = static_cast<float>(static_cast<double>(target) + 0.2);
      }
    });
  }
  if (!isTrue(m.allowBoldInFarEast)) resumeNext([&] { font.bold(VBool::False); });
}

String ResourceManager::SearchDirectory() { return impl_->searchDirectory; }
String ResourceManager::FileStub() { return impl_->fileStub; }
VBool ResourceManager::AllowBoldInFarEast() { return impl_->allowBoldInFarEast; }
void ResourceManager::AllowBoldInFarEast(VBool value) { impl_->allowBoldInFarEast = value; }
VBool ResourceManager::IncreasePointSizeInFarEast() { return impl_->increasePointSizeInFarEast; }
void ResourceManager::IncreasePointSizeInFarEast(VBool value) {
  impl_->increasePointSizeInFarEast = value;
}
VBool ResourceManager::ChangeFontNameInFarEast() { return impl_->changeFontNameInFarEast; }
void ResourceManager::ChangeFontNameInFarEast(VBool value) {
  impl_->changeFontNameInFarEast = value;
}
String ResourceManager::FontNameInFarEast() { return impl_->fontNameInFarEast; }
void ResourceManager::FontNameInFarEast(const String& value) { impl_->fontNameInFarEast = value; }

VBool ResourceManager::FarEasternLocale() {
  const std::int32_t mapped = resources::fallbackLocale(impl_->localeID);
  return toVBool(mapped == 1041 || mapped == 1042 || mapped == 2052);
}

// A plain provider supplies nothing: hosts write against the interface and hand in a manager.
String ResourceProvider::LoadResString(std::int32_t /*Number*/) { return {}; }
void ResourceProvider::ModifyFontForLocale(std::shared_ptr<Object>& /*objFont*/) {}

}  // namespace orvo
