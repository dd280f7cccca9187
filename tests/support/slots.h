// Where the table of a class ends.
#pragma once

namespace qumetra::test {

/// Adds one slot behind those of its base; the table of a class ends where it stands.
template <typename Base>
class OneMore : public Base {
 public:
  virtual void next() {}
};

}  // namespace qumetra::test
