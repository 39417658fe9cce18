#pragma once

namespace devkit::msxml {

// Base of every object that LiveObjectCount counts.
class LiveObject {
  public:
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;

    [[nodiscard]] static long Count() noexcept;

  protected:
    LiveObject() noexcept;
    ~LiveObject();
};

}  // namespace devkit::msxml
