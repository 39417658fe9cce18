#pragma once

namespace base::utility {

// Keeps the thread in a COM apartment while it lives: the multithreaded one, or the one that the thread is in
// already. Only an entry of its own is taken back, on the same thread.
class SafeCoInit {
  public:
    // HresultError when the thread can enter no apartment; being in another kind is no failure.
    SafeCoInit();
    SafeCoInit(const SafeCoInit&) = delete;
    SafeCoInit& operator=(const SafeCoInit&) = delete;
    ~SafeCoInit();

  private:
    bool m_entered;
};

}  // namespace base::utility
