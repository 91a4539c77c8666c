#include "Base/macOS/CoreFoundation.h"

namespace korvell {

namespace {

constexpr int deepest = 512;

Value convert(CFTypeRef object, int depth);

Value number(CFNumberRef object) {
  if (CFNumberIsFloatType(object)) {
    double real = 0;
    CFNumberGetValue(object, kCFNumberDoubleType, &real);
    return Value(real);
  }
  std::int64_t whole = 0;
  CFNumberGetValue(object, kCFNumberSInt64Type, &whole);
  return Value(whole);
}

Value elements(CFArrayRef array, int depth) {
  Value::Array result;
  const CFIndex count = CFArrayGetCount(array);
  result.reserve(size_t(count));
  for (CFIndex i = 0; i < count; ++i) result.push_back(convert(CFArrayGetValueAtIndex(array, i), depth + 1));
  return Value(std::move(result));
}

Value members(CFDictionaryRef dictionary, int depth) {
  struct Walk {
    Value::Object result;
    int depth;
  } walk{{}, depth + 1};
  CFDictionaryApplyFunction(
      dictionary,
      [](const void* key, const void* value, void* context) {
        auto& w = *static_cast<Walk*>(context);
        if (const auto name = cfCast<CFStringRef>(key, CFStringGetTypeID()))
          w.result.emplace_back(cfText(name), convert(value, w.depth));
      },
      &walk);
  return Value(std::move(walk.result));
}

Value convert(CFTypeRef object, int depth) {
  if (!object || depth > deepest) return {};
  const CFTypeID type = CFGetTypeID(object);
  if (type == CFStringGetTypeID()) return Value(cfText(static_cast<CFStringRef>(object)));
  if (type == CFBooleanGetTypeID()) return Value(CFBooleanGetValue(static_cast<CFBooleanRef>(object)) != 0);
  if (type == CFNumberGetTypeID()) return number(static_cast<CFNumberRef>(object));
  if (type == CFDateGetTypeID())
    return Value(
        Date{CFDateGetAbsoluteTime(static_cast<CFDateRef>(object)) + kCFAbsoluteTimeIntervalSince1970});
  if (type == CFArrayGetTypeID()) return elements(static_cast<CFArrayRef>(object), depth);
  if (type == CFDictionaryGetTypeID()) return members(static_cast<CFDictionaryRef>(object), depth);
  return {};
}

CFOwned<CFTypeRef> array(const Value::Array& elements) {
  CFOwned<CFMutableArrayRef> result(CFArrayCreateMutable(nullptr, 0, &kCFTypeArrayCallBacks));
  for (const auto& element : elements)
    if (const auto object = cfObject(element)) CFArrayAppendValue(result.get(), object.get());
  return CFOwned<CFTypeRef>(result.release());
}

CFOwned<CFTypeRef> dictionary(const Value::Object& members) {
  CFOwned<CFMutableDictionaryRef> result(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                                   &kCFTypeDictionaryValueCallBacks));
  for (const auto& [name, value] : members) {
    const auto key = cfString(name);
    const auto object = cfObject(value);
    if (key && object) CFDictionarySetValue(result.get(), key.get(), object.get());
  }
  return CFOwned<CFTypeRef>(result.release());
}

} // namespace

std::string cfText(CFStringRef text) {
  if (!text) return {};
  const CFRange all{0, CFStringGetLength(text)};
  CFIndex size = 0;
  CFStringGetBytes(text, all, kCFStringEncodingUTF8, '?', false, nullptr, 0, &size);
  std::string result(size_t(size), '\0');
  CFStringGetBytes(text, all, kCFStringEncodingUTF8, '?', false, reinterpret_cast<UInt8*>(result.data()),
                   size, nullptr);
  return result;
}

CFOwned<CFStringRef> cfString(std::string_view text) {
  return CFOwned<CFStringRef>(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                                      CFIndex(text.size()), kCFStringEncodingUTF8, false));
}

Value cfValue(CFTypeRef object) { return convert(object, 0); }

Value cfValue(CFDictionaryRef dictionary, std::span<const std::string_view> keys) {
  auto result = Value::object();
  for (const auto key : keys) {
    const auto name = cfString(key);
    if (const void* value = name ? CFDictionaryGetValue(dictionary, name.get()) : nullptr)
      result.set(key, convert(value, 1));
  }
  return result;
}

CFOwned<CFTypeRef> cfObject(const Value& value) {
  if (const auto flag = value.asBool())
    return CFOwned<CFTypeRef>(CFRetain(*flag ? kCFBooleanTrue : kCFBooleanFalse));
  if (const auto whole = value.asInt())
    return CFOwned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberSInt64Type, &*whole));
  if (const auto real = value.asDouble())
    return CFOwned<CFTypeRef>(CFNumberCreate(nullptr, kCFNumberDoubleType, &*real));
  if (const auto* text = value.asString()) return CFOwned<CFTypeRef>(cfString(*text).release());
  if (const auto date = value.asDate())
    return CFOwned<CFTypeRef>(CFDateCreate(nullptr, date->sinceEpoch - kCFAbsoluteTimeIntervalSince1970));
  if (const auto* elements = value.asArray()) return array(*elements);
  if (const auto* members = value.asObject()) return dictionary(*members);
  return {};
}

} // namespace korvell
