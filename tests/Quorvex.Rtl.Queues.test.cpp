#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Quorvex.Rtl.Queues.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Queues {
namespace {

using Exceptions::EInvalidOperation;

TEST(QueuesTest, ItemsLeaveInTheOrderTheyCameAndAnEmptyQueueRefuses) {
  // Each step: "+x" enqueues x, "-" dequeues, "?" tries to, "0" clears; the
  // expected text is what left the queue ("!" for a refusal), then the count.
  const struct {
    std::string steps, taken;
    int count;
  } cases[] = {
      {"", "", 0},       {"+a+b+c---", "abc", 0}, {"+a+b-+c", "a", 2}, {"-", "!", 0},
      {"?+a?", "!a", 0}, {"+a+b0-", "!", 0},      {"+a-+b-", "ab", 0}, {"+a+b+c-0?+d?", "a!d", 0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.steps);
    TQueue<std::string>* queue = Objects::CreateObject<TQueue<std::string>>();
    std::string taken;
    for (size_t i = 0; i < test.steps.size(); ++i) {
      switch (test.steps[i]) {
        case '+':
          queue->Enqueue(std::string(1, test.steps[++i]));
          break;
        case '-':
          try {
            taken += queue->Dequeue();
          } catch (const EInvalidOperation& error) {
            EXPECT_EQ(error.Message(), u"Queue is empty");
            taken += '!';
          }
          break;
        case '?': {
          std::string head = "untouched";
          const bool got = queue->TryDequeue(head);
          if (!got) {
            EXPECT_EQ(head, "untouched");
          }
          taken += got ? head : "!";
          break;
        }
        case '0':
          queue->Clear();
          break;
      }
    }
    EXPECT_EQ(taken, test.taken);
    EXPECT_EQ(queue->Count(), test.count);
    Objects::FreeObject(queue);
  }
}

TEST(QueuesTest, FreeingTheQueueDestroysWhatIsStillQueued) {
  int destroyed = 0;
  auto* queue = Objects::CreateObject<TQueue<std::shared_ptr<int>>>();
  for (int i = 0; i < 3; ++i)
    queue->Enqueue(std::shared_ptr<int>(new int(i), [&destroyed](int* p) {
      ++destroyed;
      delete p;
    }));
  EXPECT_EQ(*queue->Dequeue(), 0);
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(queue->ClassName(), u"TQueue");
  Objects::FreeObject(queue);
  EXPECT_EQ(destroyed, 3);
}

}  // namespace
}  // namespace Quorvex::Rtl::Queues
