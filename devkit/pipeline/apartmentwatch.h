#pragma once

#include "platform/windows.h"

#include <functional>
#include <memory>

#include "platform/comptr.h"

namespace devkit::pipeline {

// Watches how the thread that makes it enters COM and leaves it again, until the same thread destroys it.
class ApartmentWatch {
  public:
    // `onUnpaired` is called by each CoUninitialize that has no CoInitializeEx before it, counted from here.
    // `onEntered`, which may be empty, is called when the thread has entered an apartment anew, and what it
    // returns destroyed before the thread leaves that one. What either throws is lost.
    explicit ApartmentWatch(std::function<void()> onUnpaired,
                            std::function<std::shared_ptr<void>()> onEntered = nullptr);
    ApartmentWatch(const ApartmentWatch&) = delete;
    ApartmentWatch& operator=(const ApartmentWatch&) = delete;
    ~ApartmentWatch();

  private:
    platform::ComPtr<IUnknown> m_spy;
    ULARGE_INTEGER m_cookie{};
    bool m_isRegistered = false;
};

}  // namespace devkit::pipeline
