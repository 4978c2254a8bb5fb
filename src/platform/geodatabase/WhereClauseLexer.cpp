#include "platform/geodatabase/WhereClauseLexer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/WhereClauseNode.h"
#include "platform/geodatabase/WhereClauseValue.h"

#include <cctype>

namespace brevant::platform::geodatabase::whereclause {

namespace {

bool isNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

} // namespace

void throwSyntaxError(std::string_view clause, const std::string& what, std::size_t position)
{
    const std::string where =
        position >= clause.size() ? "at the end" : "at character " + std::to_string(position + 1);
    // A NUL is shown as \0, or it would end the message's text where it stands.
    std::string shown;
    for (const char c : clause) {
        shown += c == '\0' ? std::string("\\0") : std::string(1, c);
    }
    throw automation::PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                                    "invalid where clause \"" + shown + "\": " + what + " " +
                                        where);
}

std::vector<Token> tokenize(std::string_view clause)
{
    const std::string_view s = clause;
    const auto fail = [&](const std::string& what, std::size_t position) {
        throwSyntaxError(clause, what, position);
    };
    // The translation goes on to SQLite and GDAL as C text, which a NUL would cut short.
    if (const auto nul = s.find('\0'); nul != std::string_view::npos) {
        fail("a NUL character is not allowed", nul);
    }
    std::vector<Token> tokens;
    std::size_t i = 0;
    while (true) {
        while (i < s.size() && isSpace(s[i])) {
            ++i;
        }
        Token token;
        token.position = i;
        if (i >= s.size()) {
            tokens.push_back(token);
            return tokens;
        }
        const char c = s[i];
        if (isDigit(c) || (c == '.' && i + 1 < s.size() && isDigit(s[i + 1]))) {
            bool real = false;
            const std::size_t length = numberPrefix(s, i, real);
            token.kind = TokenKind::Number;
            token.text = std::string(s.substr(i, length));
            i += length;
            if (i < s.size() && (isNameChar(s[i]) || s[i] == '.')) {
                fail("malformed number", token.position);
            }
        } else if (c == '\'' || c == '"') {
            token.kind = TokenKind::String;
            ++i;
            while (true) {
                if (i >= s.size()) {
                    fail("unterminated text", token.position);
                }
                if (s[i] == c) {
                    // A doubled quote stands for itself.
                    if (i + 1 < s.size() && s[i + 1] == c) {
                        token.text += c;
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                token.text += s[i++];
            }
        } else if (c == '[') {
            const std::size_t close = s.find(']', i + 1);
            if (close == std::string_view::npos) {
                fail("unterminated [name]", token.position);
            }
            token.kind = TokenKind::Name;
            token.bracketed = true;
            token.text = std::string(s.substr(i + 1, close - i - 1));
            if (token.text.empty()) {
                fail("empty []", token.position);
            }
            i = close + 1;
        } else if (isNameChar(c)) {
            token.kind = TokenKind::Name;
            while (i < s.size() && isNameChar(s[i])) {
                token.text += s[i++];
            }
        } else {
            token.kind = TokenKind::Symbol;
            const std::string_view two = s.substr(i, 2);
            if (two == "<>" || two == "<=" || two == ">=" || two == "!=") {
                token.text = std::string(two);
                i += 2;
            } else if (std::string_view("=<>+-*/&(),.").find(c) != std::string_view::npos) {
                token.text = std::string(1, c);
                ++i;
            } else {
                fail("unexpected '" + std::string(1, c) + "'", token.position);
            }
        }
        tokens.push_back(std::move(token));
    }
}

} // namespace brevant::platform::geodatabase::whereclause
