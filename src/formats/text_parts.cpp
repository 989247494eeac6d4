#include "formats/text_parts.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace vorel::formats {
namespace {

// Lets the parts into the stream one after another. Whoever has made one waits for its turn: the
// parts before it have been handed out before, so that somebody is at work on the first that lacks.
class Turns {
 public:
  bool has_come(std::uint32_t part) {
    const std::scoped_lock lock(mutex_);
    return next_ == part;
  }
  void wait_for(std::uint32_t part) {
    std::unique_lock lock(mutex_);
    has_come_.wait(lock, [&] { return next_ == part; });
  }
  void end() {
    const std::scoped_lock lock(mutex_);
    ++next_;
    has_come_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable has_come_;
  std::uint32_t next_ = 0;  // guarded by mutex_
};

}  // namespace

bool write_parts(std::uint32_t part_count, base::WorkerPool& pool, std::ostream& stream,
                 const std::function<void(std::uint32_t part, base::TextSink& sink)>& add_part) {
  base::TextSink direct(stream);
  if (pool.size() == 1) {
    for (std::uint32_t part = 0; part < part_count; ++part) add_part(part, direct);
    return direct.finish();
  }
  Turns turns;
  const auto sinks = std::make_unique<base::TextSink[]>(pool.size());
  std::atomic<std::uint32_t> next_part{0};
  pool.run_all([&](std::uint32_t worker) {
    base::TextSink& sink = sinks[worker];
    for (std::uint32_t part = next_part++; part < part_count; part = next_part++) {
      // The first part is the longest, as that of a net often is: it need not be in memory.
      if (turns.has_come(part)) {
        add_part(part, direct);
        direct.drain();
      } else {
        sink.clear();
        add_part(part, sink);
        turns.wait_for(part);
        stream.write(sink.text().data(), static_cast<std::streamsize>(sink.text().size()));
      }
      turns.end();
    }
  });
  return direct.finish();
}

}  // namespace vorel::formats
