# Warnings are errors, with g++ and clang alike.
add_library(talvenor_warnings INTERFACE)
target_compile_options(talvenor_warnings INTERFACE
   -Wall -Wextra -Wpedantic -Werror -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wformat=2
   -Wundef -Wextra-semi -Woverloaded-virtual)
