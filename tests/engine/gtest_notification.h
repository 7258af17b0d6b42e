#pragma once

/// GoogleTest makes this class of std::mutex, which the compiler's thread model does not have. Only threads that
/// GoogleTest's own tests start would wait with it, so waiting is all that is left out.
namespace testing::internal {

class Notification {
 public:
  void Notify() {}
  void WaitForNotification() {}
};

}  // namespace testing::internal
