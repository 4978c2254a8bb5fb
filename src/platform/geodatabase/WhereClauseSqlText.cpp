#include "platform/geodatabase/WhereClauseSqlText.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/SqlQuote.h"
#include "platform/geodatabase/WhereClauseNode.h"

namespace brevant::platform::geodatabase::whereclause {

std::string joined(std::initializer_list<std::string_view> pieces)
{
    std::size_t size = 0;
    for (std::string_view piece : pieces) {
        size += piece.size();
    }
    std::string out;
    out.reserve(size);
    for (std::string_view piece : pieces) {
        out += piece;
    }
    return out;
}

std::string quoteText(std::string_view text)
{
    return sqlQuoted(text, '\'');
}

std::string quotedField(const WhereClause::FieldResolver& resolve, const std::string& clause,
                        const std::string& name)
{
    std::optional<std::string> stored = resolve ? resolve(name) : std::nullopt;
    if (!stored) {
        throw automation::PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                                        "where clause \"" + clause + "\" names field " + name +
                                            ", which the table does not have");
    }
    return sqlQuoted(*stored, '"');
}

} // namespace brevant::platform::geodatabase::whereclause
