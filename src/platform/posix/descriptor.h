// A Descriptor is an open file of the system, which is closed with it. Whoever opened the file owns it.
#pragma once

namespace platform::posix {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    [[nodiscard]] int number() const { return number_; }

  private:
    int number_;
};

}  // namespace platform::posix
