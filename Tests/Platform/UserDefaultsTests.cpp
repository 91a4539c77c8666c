#include "Tests/Contracts/UserDefaultsContract.h"
#include "Tests/Fakes/FakeUserDefaults.h"

using namespace korvell;

namespace {

struct FakeWorld final : UserDefaultsWorld {
  std::shared_ptr<FakeUserDefaults::Store> store = std::make_shared<FakeUserDefaults::Store>();
  std::unique_ptr<UserDefaults> open() override { return std::make_unique<FakeUserDefaults>(store); }
};

} // namespace

namespace korvell {
INSTANTIATE_TEST_SUITE_P(Fake, UserDefaultsContract,
                         testing::Values([] { return std::make_unique<FakeWorld>(); }));
} // namespace korvell
