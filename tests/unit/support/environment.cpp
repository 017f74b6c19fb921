// Every test may run alone in its own process (ctest runs them so), so the
// process-wide charsets and collations are loaded before any test starts.
#include <gtest/gtest.h>

#include "text/charset.h"
#include "text/collation.h"

namespace {

class RuntimeTablesEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        zobase::__init_character_sets();
        zobase::__init_collations();
    }
};

const auto* registered = ::testing::AddGlobalTestEnvironment(new RuntimeTablesEnvironment);

}  // namespace
