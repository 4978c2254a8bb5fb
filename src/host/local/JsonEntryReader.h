#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace brevant::host::local {

/// The checks every reader of a host JSON file makes on the entries it reads. A reader derives
/// from it and says in fail() where in its file a problem was found.
class JsonEntryReader {
public:
    virtual ~JsonEntryReader() = default;

protected:
    /// Raises the reader's MalformedFile host error for `what`; never returns.
    [[noreturn]] virtual void fail(const std::string& what) const = 0;
    /// Fails with `notAnObject` unless `item` is a JSON object, and with "has the unknown key
    /// \"k\"" for its first key not among `allowed`.
    void checkKeys(const nlohmann::ordered_json& item,
                   std::initializer_list<std::string_view> allowed,
                   std::string_view notAnObject = "must be a JSON object") const;
    /// The text under `key`; fails with "needs \"key\" as a text" when it is missing or not a
    /// text.
    std::string text(const nlohmann::ordered_json& item, const char* key) const;
};

} // namespace brevant::host::local
