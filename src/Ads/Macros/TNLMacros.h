#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

// Macro tokens ("%SESSION_ID%") to their current values.
using TNLMacroDict = std::map<std::string, std::string>;

// The one process-wide macro table. Filled once, when first used, from the device snapshot and
// the manifest held at that moment (which also decides, for the life of the process, whether the
// user is privacy-restricted); later only "%APP_ID%", "%PROPERTY%", "%LAT%", "%LONG%" and
// "%CONN_TYPE%" are written. Readers take snapshot copies.
class TNLMacros {
 public:
  static std::shared_ptr<TNLMacros> sharedMacros();
  // A copy of the current table; empty when the table could not be built.
  static TNLMacroDict sharedMacroDict();
  // Stores `value` under `token`; a null value removes the token.
  static void setValueInMacroDictionary(const std::optional<std::string>& value,
                                        const std::string& token);

  TNLMacros();

  // Key-value coding: assigns the object's attribute named `key`. The table's values are not
  // attributes (setValueInMacroDictionary writes those), and no attribute of the object takes a
  // string, so every key is undefined here: raises TNLException (TNLUndefinedKeyException).
  void setValue(const std::optional<std::string>& value, const std::string& key);

  // Null until construction has finished successfully.
  std::shared_ptr<const TNLMacroDict> macroDict() const;
  void setMacroDict(std::shared_ptr<TNLMacroDict> macroDict);

 private:
  mutable std::mutex mutex_;
  // Replaced whole by setMacroDict, changed in place (under the lock) by the writers.
  std::shared_ptr<TNLMacroDict> macroDict_;
};
