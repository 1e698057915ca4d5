// How long this test's platform waits. Tests run twenty times as patient as what ships
// (CMakeLists.txt), for a daemon that a busy machine starves is no broken one; with the usual
// patience where something is meant to hang.
#pragma once

#include "platform/linux/base/deadline.h"

class TimesPatient {
 public:
  explicit TimesPatient(int times) : before_(linux_platform::SetPatience(times)) {}
  ~TimesPatient() { linux_platform::SetPatience(before_); }
  TimesPatient(const TimesPatient&) = delete;
  TimesPatient& operator=(const TimesPatient&) = delete;

 private:
  const int before_;
};
