#include "platform/ui/UserPrompts.h"

#include "platform/ui/ScriptedPrompts.h"

#include <utility>

namespace brevant::platform::ui {

namespace {
std::shared_ptr<UserPrompts>& installed()
{
    static std::shared_ptr<UserPrompts> prompts;
    return prompts;
}
} // namespace

void installUserPrompts(std::shared_ptr<UserPrompts> prompts)
{
    installed() = std::move(prompts);
}

UserPrompts& userPrompts()
{
    if (!installed()) {
        installed() = std::make_shared<ScriptedPrompts>();
    }
    return *installed();
}

} // namespace brevant::platform::ui
