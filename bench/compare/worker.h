// A bench_worker of some build, as a child process that is asked line by line.

#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <string>

namespace tavo::bench {

class Worker {
  public:
    // Starts the program. Throws std::runtime_error where it cannot.
    explicit Worker(const std::string& program);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // The answer to one line. Throws where the program has ended or answers with an error.
    std::string Ask(const std::string& line);

  private:
    struct Close {
        void operator()(FILE* file) const { std::fclose(file); }
    };
    using OwnedFile = std::unique_ptr<FILE, Close>;

    std::string program_;
    pid_t child_ = -1;
    OwnedFile requests_;
    OwnedFile answers_;
};

}  // namespace tavo::bench
