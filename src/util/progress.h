// How far a long computation is.
#pragma once

namespace quor {

/// Is told how far a computation is. It may throw to stop it: all that was allocated is released.
class Observer {
 public:
  /// @param fraction  of the whole that is done, 0 .. 1, never less than the last time
  virtual void advanceTo(double fraction) = 0;

 protected:
  ~Observer() = default;
};

/// The share of one step in a computation that somebody may be watching. Steps divide their share
/// among their own steps, and report what part of it is done. Watching changes no result.
class Progress {
 public:
  /// Nobody watches.
  Progress() = default;
  explicit Progress(Observer* observer) : observer_(observer) {}

  /// Whether somebody watches.
  explicit operator bool() const { return observer_ != nullptr; }

  /// The share of a step that begins when `begin` of this one is done and ends at `end`; 0 .. 1.
  Progress part(double begin, double end) const {
    Progress step(observer_);
    step.begin_ = at(begin);
    step.end_ = at(end);
    return step;
  }

  /// @param done  of the step, 0 .. 1
  void report(double done) const {
    if (observer_ != nullptr) {
      observer_->advanceTo(at(done));
    }
  }

 private:
  double at(double done) const { return begin_ + done * (end_ - begin_); }

  Observer* observer_ = nullptr;
  double begin_ = 0.0;
  double end_ = 1.0;
};

}  // namespace quor
