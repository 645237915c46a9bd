#pragma once

namespace quellix {

// The calling thread's part of COM, which the shell needs, from its first use to the end of this
// object.
class Win32Com {
 public:
  Win32Com() = default;
  ~Win32Com();
  Win32Com(const Win32Com&) = delete;
  Win32Com& operator=(const Win32Com&) = delete;

  void Start();

 private:
  bool started_ = false;
};

}  // namespace quellix
