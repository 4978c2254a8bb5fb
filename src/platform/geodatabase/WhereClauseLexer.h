#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::geodatabase::whereclause {

enum class TokenKind { End, Number, String, Name, Symbol };

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text; // strings unquoted, [names] without brackets
    bool bracketed = false;
    std::size_t position = 0;
};

/// The tokens of `clause`, ending with one End token. Throws PlatformError (InvalidArgument)
/// as throwSyntaxError does.
std::vector<Token> tokenize(std::string_view clause);

/// Throws PlatformError (InvalidArgument) quoting `clause` and saying `what` went wrong at
/// which character (or at the end).
[[noreturn]] void throwSyntaxError(std::string_view clause, const std::string& what,
                                   std::size_t position);

} // namespace brevant::platform::geodatabase::whereclause
