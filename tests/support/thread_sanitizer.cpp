// Libraries that were built without ThreadSanitizer, whose own care it therefore cannot see:
// - Regular expressions lend each other's threads blocks of memory, from a cache of atomic
//   pointers. A block's next use looks like a race.
// - libsystemd makes the random key of its hash tables in one place for all threads: a key that
//   two threads write at once is as random as any.
// - umockdev opens and closes descriptors of its own. A number that it had and another thread gets
//   next looks like one that both use. It opens folders past the sanitizer, too, which then sees
//   only that they are closed.
#pragma GCC visibility push(default)
extern "C" const char* __tsan_default_suppressions() {
  return "race:boost::re_detail_\n"
         "race:libsystemd.so\n"
         "race:libumockdev-preload.so\n"
         "race:linux_platform::CloseFolder\n";
}
#pragma GCC visibility pop
