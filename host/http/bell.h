// Wakes up a thread that waits for descriptors.
#pragma once

namespace host {

class Bell {
 public:
  // Throws Failure(kUnavailable) when the system has no descriptor left.
  Bell();
  ~Bell();
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;

  // Readable from Ring until Hush.
  int Descriptor() const { return descriptor_; }
  void Ring() const;
  void Hush() const;

 private:
  int descriptor_;
};

}  // namespace host
