// What the generator makes of three men, element by element against the reference.

#include <gtest/gtest.h>

#include "globalregister/generated_tables.h"
#include "globalregister/reference_comparison.h"

namespace quillon {
namespace {

TEST(GeneratorReference, EveryElementOfThreeMenIsThatOfTheReference) {
    CGeneratedTables generated;
    reference::RetrogradeTables tables;
    for (const char* const type : {"Q", "R", "B", "N", "P", "q", "r", "b", "n", "p"})
        ExpectElementsOfReference(type, generated.Generate(type), tables.Of(type));
}

} // namespace
} // namespace quillon
