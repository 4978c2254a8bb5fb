#include "platform/ui/ScriptedPrompts.h"

#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>

namespace brevant::platform::ui {

// Readable failures when call lists differ.
void PrintTo(const ScriptedPrompts::ProgressCall& call, std::ostream* out)
{
    *out << "{kind " << static_cast<int>(call.kind) << ", \"" << call.text << "\", " << call.value
         << "}";
}

namespace {

using Call = ScriptedPrompts::ProgressCall;
using Kind = ScriptedPrompts::ProgressCall::Kind;

class ScriptedAnswers : public ::testing::Test {
protected:
    void queue(std::initializer_list<const char*> answers)
    {
        for (const char* answer : answers) {
            m_prompts.queueAnswer(answer);
        }
    }

    ScriptedPrompts m_prompts;
};

TEST_F(ScriptedAnswers, MessageBoxTakesTheNamedButtonOrItsFirst)
{
    queue({"no", "CANCEL", "Ok"});
    // An OK-only box asks nothing, so it leaves the queue to the question after it.
    EXPECT_EQ(m_prompts.messageBox("There are 3 objects", "Korval", MessageButtons::Ok),
              MessageResult::Ok);
    EXPECT_EQ(m_prompts.pendingAnswers(), 3u);
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::YesNo), MessageResult::No);
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::YesNoCancel),
              MessageResult::Cancel);
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::OkCancel),
              MessageResult::Ok);
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::YesNo), MessageResult::Yes);
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::OkCancel),
              MessageResult::Ok);
}

TEST_F(ScriptedAnswers, AnswerOutOfStepWithThePromptsThrows)
{
    queue({"80", "Yes", "red"});
    EXPECT_THROW(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::YesNo),
                 std::invalid_argument);
    EXPECT_THROW(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::OkCancel),
                 std::invalid_argument);
    EXPECT_THROW(m_prompts.colourDialog(0, ColourDialogFlags::None, "Select Line Color"),
                 std::invalid_argument);
}

TEST_F(ScriptedAnswers, InputBoxTakesAnswersInOrderAndCancels)
{
    queue({"80", "", "cancel"});
    const std::string prompt = "Enter confidence value between 0 and 100";
    EXPECT_EQ(m_prompts.inputBox(prompt, "KORVAL", "50"), "80");
    EXPECT_EQ(m_prompts.inputBox(prompt, "KORVAL", "50"), "");
    EXPECT_EQ(m_prompts.inputBox(prompt, "KORVAL", "50"), std::nullopt);
    EXPECT_EQ(m_prompts.inputBox(prompt, "KORVAL", "50"), std::nullopt) << "empty queue";
}

TEST_F(ScriptedAnswers, ColourDialogReadsColoursAndCancels)
{
    const auto preset = ColourDialogFlags::PresetColour | ColourDialogFlags::FullOpen;
    queue({"#FF8000", "255", "OK", "OK", "Cancel", ""});
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), 0x0080FF);
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), 0x0000FF);
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), 0x00FF00);
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, ColourDialogFlags::None, "Select Fill Color"), 0)
        << "without a preset the dialog opens on black";
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), std::nullopt);
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), std::nullopt);
    EXPECT_EQ(m_prompts.colourDialog(0x00FF00, preset, "Select Fill Color"), std::nullopt);

    queue({"16777216"});
    EXPECT_THROW(m_prompts.colourDialog(0, preset, "Select Fill Color"), std::invalid_argument);
}

TEST_F(ScriptedAnswers, FileDialogAnswersAreFoldersPathsOrCancel)
{
    const FileDialogRequest open{.startFolder = "/data/flood", .extension = "shp"};
    const FileDialogRequest save{
        .mode = FileDialogMode::Save, .startFolder = "/data/out", .extension = "pdf"};
    queue({"depth.shp", "/elsewhere/depth.shp", "page", "page.png", "Cancel"});
    EXPECT_EQ(m_prompts.fileDialog(open), "/data/flood/depth.shp");
    EXPECT_EQ(m_prompts.fileDialog(open), "/elsewhere/depth.shp");
    EXPECT_EQ(m_prompts.fileDialog(save), "/data/out/page.pdf");
    EXPECT_EQ(m_prompts.fileDialog(save), "/data/out/page.png");
    EXPECT_EQ(m_prompts.fileDialog(open), std::nullopt);
    EXPECT_EQ(m_prompts.fileDialog(open), std::nullopt) << "empty queue";
}

class ScriptedRecording : public ::testing::Test {
protected:
    ScriptedPrompts m_prompts;
};

TEST_F(ScriptedRecording, MessagesKeepTheirOrderTitlesAndButtons)
{
    m_prompts.messageBox("There are 2 objects outside the study region, they will not be stored.",
                         "Korval", MessageButtons::Ok);
    m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50");
    m_prompts.messageBox("Invalid feature type", "KORVAL", MessageButtons::YesNo);

    // Input boxes are questions, not messages: the script output lists messages only.
    const auto messages = m_prompts.takeMessages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].title, "Korval");
    EXPECT_EQ(messages[0].text,
              "There are 2 objects outside the study region, they will not be stored.");
    EXPECT_EQ(messages[0].buttons, MessageButtons::Ok);
    EXPECT_EQ(messages[1].text, "Invalid feature type");
    EXPECT_EQ(messages[1].buttons, MessageButtons::YesNo);
    EXPECT_TRUE(m_prompts.messages().empty());
}

TEST_F(ScriptedRecording, QuestionsKeepWhatTheyAsked)
{
    m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50");
    m_prompts.colourDialog(0x123456, ColourDialogFlags::PresetColour | ColourDialogFlags::FullOpen,
                           "Select Outline Color");
    m_prompts.fileDialog({.startFolder = "/data/flood", .extension = "shp"});

    ASSERT_EQ(m_prompts.inputBoxes().size(), 1u);
    EXPECT_EQ(m_prompts.inputBoxes()[0].prompt, "Enter confidence value between 0 and 100");
    EXPECT_EQ(m_prompts.inputBoxes()[0].defaultValue, "50");
    ASSERT_EQ(m_prompts.colourDialogs().size(), 1u);
    EXPECT_EQ(m_prompts.colourDialogs()[0].preset, 0x123456);
    EXPECT_EQ(static_cast<int>(m_prompts.colourDialogs()[0].flags), 3);
    EXPECT_EQ(m_prompts.colourDialogs()[0].title, "Select Outline Color");
    ASSERT_EQ(m_prompts.fileDialogs().size(), 1u);
    EXPECT_EQ(m_prompts.fileDialogs()[0].startFolder, "/data/flood");
    EXPECT_EQ(m_prompts.fileDialogs()[0].extension, "shp");
    EXPECT_EQ(m_prompts.fileDialogs()[0].mode, FileDialogMode::Open);
}

TEST_F(ScriptedRecording, ProgressCallsOfEveryDialogInOrder)
{
    auto prompts = std::make_unique<ScriptedPrompts>();
    auto clipping = prompts->progressDialog();
    clipping->show();
    clipping->setTitle("Clipping data maps");
    clipping->setMessage("Initializing");
    clipping->setStepCount(2);
    clipping->advance();
    clipping->close();
    auto updating = prompts->progressDialog();
    updating->setPosition(3);

    const std::vector<Call> expected{
        {Kind::Show, "", 0},
        {Kind::Title, "Clipping data maps", 0},
        {Kind::Message, "Initializing", 0},
        {Kind::StepCount, "", 2},
        {Kind::Advance, "", 0},
        {Kind::Close, "", 0},
        {Kind::Position, "", 3},
    };
    EXPECT_EQ(prompts->progressCalls(), expected);

    // Domain objects may keep their dialog longer than the prompts live.
    prompts.reset();
    updating->advance();
    updating->close();
}

TEST(InstalledPrompts, WithoutInstallationNothingIsAnswered)
{
    installUserPrompts(nullptr);
    EXPECT_EQ(userPrompts().inputBox("Enter confidence value between 0 and 100", "KORVAL", "50"),
              std::nullopt);
    EXPECT_EQ(userPrompts().messageBox("Obsolete Method", "KORVAL"), MessageResult::Ok);

    auto scripted = std::make_shared<ScriptedPrompts>();
    scripted->queueAnswer("80");
    installUserPrompts(scripted);
    EXPECT_EQ(userPrompts().inputBox("Confidence?", "KORVAL"), "80");
    installUserPrompts(nullptr);
}

} // namespace
} // namespace brevant::platform::ui
