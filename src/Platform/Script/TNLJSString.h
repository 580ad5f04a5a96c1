#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <string>

// Owns a JSStringRef made from UTF-8 text or adopted from the engine.
class TNLJSString {
 public:
  explicit TNLJSString(const std::string& text);
  explicit TNLJSString(JSStringRef adopted) : string_(adopted) {}
  ~TNLJSString();
  TNLJSString(const TNLJSString&) = delete;
  TNLJSString& operator=(const TNLJSString&) = delete;

  JSStringRef get() const { return string_; }
  std::string utf8() const;

 private:
  JSStringRef string_ = nullptr;
};
