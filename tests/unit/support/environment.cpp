// Every test may run alone in its own process (ctest runs them so), so the
// process-wide charsets and collations are loaded before any test starts.
// Every test runs the dispatch loop in its checked mode: each instruction's
// stack effect is verified against the instruction table.
#include <gtest/gtest.h>

#include "text/charset.h"
#include "text/collation.h"
#include "vm/vm_run.h"

namespace {

class RuntimeTablesEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        zobase::__init_character_sets();
        zobase::__init_collations();
        zobase::vm_check_stack_effects = true;
    }
};

const auto* registered = ::testing::AddGlobalTestEnvironment(new RuntimeTablesEnvironment);

}  // namespace
