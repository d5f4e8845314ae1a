// The stand-in's "Parvane.Profiler": a profiler whose time does not pass by itself. The n'th ProfileStop,
// whichever object it is asked of, answers n times 25 tenths of a millisecond.
//
// Beside what a profiler has, every object of the class tells what all of them were asked: `Record` is a text
// of calls, each the object's number in order of creation, a point and the method. `Forget` begins anew: the
// next object is number 1, its first time is 25. `Break` makes each ProfileStop raise an error from then on.
#pragma once

#include "windows/com_server/server_object.h"

namespace stand_in {

class Profiler : public com_server::ServerObject {
  public:
    Profiler();

  private:
    void note(const wchar_t* method) const;
    static double stop();

    int number_;
};

}  // namespace stand_in
