// Which requests of a thread for memory are refused.
#pragma once

namespace tavo_test {

// One for each thread and sort of memory. Needs no construction and allocates nothing, so that
// allocation functions can ask it at any time.
class Refusals {
  public:
    void Start(int after) {
        allowed_ = after;
        refused_ = 0;
        refusing_ = true;
    }
    void End() { refusing_ = false; }

    // Counts the request.
    bool RefuseNext() {
        if (!refusing_) return false;
        if (allowed_ > 0) {
            --allowed_;
            return false;
        }
        ++refused_;
        return true;
    }

    int Refused() const { return refused_; }

  private:
    bool refusing_ = false;
    int allowed_ = 0;
    int refused_ = 0;
};

}  // namespace tavo_test
