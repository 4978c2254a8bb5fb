#include "platform/ui/ConsoleProgressDialog.h"

#include <gtest/gtest.h>
#include <sstream>

namespace brevant::platform::ui {
namespace {

class ConsoleProgress : public ::testing::Test {
protected:
    std::unique_ptr<ConsoleProgressDialog> dialog(ProgressStyle style)
    {
        return std::make_unique<ConsoleProgressDialog>(m_out, style, m_onScreen);
    }

    // The calls of a clipping run with one map, whose clip advances more often than counted.
    void clipOneMap(ProgressDialog& progress)
    {
        progress.show();
        progress.setTitle("Clipping data maps");
        progress.setMessage("Initializing");
        progress.setStepCount(2);
        progress.setMessage("Clipping Soil Map");
        for (int i = 0; i < 4; ++i) {
            progress.advance();
        }
        progress.close();
    }

    std::ostringstream m_out;
    std::shared_ptr<std::string> m_onScreen = std::make_shared<std::string>();
};

TEST_F(ConsoleProgress, LinesFollowMessagesAndStepsAndStopAtTheLastStep)
{
    auto progress = dialog(ProgressStyle::Lines);
    clipOneMap(*progress);
    EXPECT_EQ(m_out.str(), "Clipping data maps: Initializing\n"
                           "Clipping data maps: Clipping Soil Map (0/2)\n"
                           "Clipping data maps: Clipping Soil Map (1/2)\n"
                           "Clipping data maps: Clipping Soil Map (2/2)\n");
}

TEST_F(ConsoleProgress, HiddenDialogWritesNothing)
{
    auto progress = dialog(ProgressStyle::Lines);
    progress->setTitle("Updating ");
    progress->setMessage("Updating inventory table");
    progress->advance();
    EXPECT_EQ(m_out.str(), "");
}

TEST_F(ConsoleProgress, BarIsRedrawnInPlaceAndEndsItsLineOnClose)
{
    auto progress = dialog(ProgressStyle::Bar);
    clipOneMap(*progress);
    const std::string out = m_out.str();
    EXPECT_NE(out.find("\rClipping data maps: Clipping Soil Map [----------"
                       "----------] 0/2\033[K"),
              std::string::npos);
    EXPECT_NE(out.find("\rClipping data maps: Clipping Soil Map [##########"
                       "----------] 1/2\033[K"),
              std::string::npos);
    EXPECT_EQ(out.find("3/2"), std::string::npos);
    EXPECT_EQ(out.back(), '\n');
    EXPECT_EQ(out.find('\n'), out.size() - 1) << "one line, redrawn";
    EXPECT_TRUE(m_onScreen->empty());
}

TEST_F(ConsoleProgress, ReleasedWithoutCloseEndsTheBarLine)
{
    auto progress = dialog(ProgressStyle::Bar);
    progress->show();
    progress->setMessage("Processing hzBldg");
    EXPECT_EQ(*m_onScreen, "Processing hzBldg");
    progress.reset();
    EXPECT_EQ(m_out.str().back(), '\n');
    EXPECT_TRUE(m_onScreen->empty());
}

} // namespace
} // namespace brevant::platform::ui
