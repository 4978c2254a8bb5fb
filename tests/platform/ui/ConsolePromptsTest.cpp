#include "platform/ui/ConsolePrompts.h"

#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

namespace brevant::platform::ui {
namespace {

class ConsolePromptsTest : public ::testing::Test {
protected:
    std::ostringstream m_out;
    std::ostringstream m_progress;
    ConsolePrompts m_prompts{m_out, m_progress, ProgressStyle::Lines};
};

TEST_F(ConsolePromptsTest, PrintsEachPromptAsTitleAndText)
{
    m_prompts.queueAnswer("No");
    m_prompts.queueAnswer("80");
    m_prompts.messageBox("Some error occured in data maps processing, please refer to "
                         "DataMapsLog.txt in study region",
                         "Korval", MessageButtons::Ok);
    m_prompts.messageBox("Replace the layer?", "KORVAL", MessageButtons::YesNo);
    m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50");
    m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50");
    m_prompts.fileDialog({.startFolder = "/data/flood", .extension = "shp"});

    EXPECT_EQ(m_out.str(), "Korval: Some error occured in data maps processing, please refer to "
                           "DataMapsLog.txt in study region\n"
                           "KORVAL: Replace the layer? -> No\n"
                           "KORVAL: Enter confidence value between 0 and 100 -> \"80\"\n"
                           "KORVAL: Enter confidence value between 0 and 100 -> (cancelled)\n"
                           "Open: open file in /data/flood -> (cancelled)\n");
    // The script host reports the messages with its answer line.
    EXPECT_EQ(m_prompts.takeMessages().size(), 2u);
}

TEST_F(ConsolePromptsTest, NeverReadsTheKeyboard)
{
    std::istringstream keyboard("99\n");
    auto* previous = std::cin.rdbuf(keyboard.rdbuf());
    const auto answer =
        m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50");
    std::cin.rdbuf(previous);
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_EQ(keyboard.tellg(), 0);
}

TEST(ConsolePromptsOnTerminal, MessageDuringProgressTakesTheBarLine)
{
    std::ostringstream terminal;
    ConsolePrompts prompts(terminal, terminal, ProgressStyle::Bar);
    auto progress = prompts.progressDialog();
    progress->show();
    progress->setTitle("Updating ");
    progress->setMessage("Updating inventory table");
    terminal.str("");
    prompts.messageBox("Invalid feature type", "KORVAL", MessageButtons::Ok);
    EXPECT_EQ(terminal.str(),
              "\r\033[KKORVAL: Invalid feature type\nUpdating : Updating inventory table");

    progress->close();
    terminal.str("");
    prompts.messageBox("Obsolete Method", "KORVAL", MessageButtons::Ok);
    EXPECT_EQ(terminal.str(), "KORVAL: Obsolete Method\n");
}

} // namespace
} // namespace brevant::platform::ui
