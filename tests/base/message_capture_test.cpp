#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <thread>

#include "base/messages.h"

namespace vorel::base {
namespace {

TEST(MessageCapture, CollectsWhatIsSaidWhileItLivesWithASeverityOfItsOwn) {
  const std::uint32_t before = raise_severity(0);
  {
    MessageCapture outer;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    print_warning("outside");
    {
      MessageCapture inner;
      std::thread([] { print_error("of a thread"); }).join();
      notes_stream() << "unseen";
      EXPECT_TRUE(run_failed() && inner.has_failed());
      const auto messages = inner.take();
      ASSERT_EQ(messages.size(), 1u);
      EXPECT_EQ(messages[0].text, "of a thread");
      EXPECT_TRUE(messages[0].is_error);
      EXPECT_TRUE(inner.take().empty());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(raise_severity(0), severity_warning);
    const auto messages = outer.take();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_FALSE(messages[0].is_error);
  }
  EXPECT_EQ(raise_severity(0), before);
  EXPECT_EQ(&notes_stream(), &std::cout);
}

TEST(MessageCapture, LetsAMemoryOverflowEndTheProcess) {
  EXPECT_EXIT(
      {
        MessageCapture capture;
        print_last_error("memory overflow");
        std::_Exit(static_cast<int>(raise_severity(severity_memory_overflow)));
      },
      testing::ExitedWithCode(5), "memory overflow");
}

}  // namespace
}  // namespace vorel::base
