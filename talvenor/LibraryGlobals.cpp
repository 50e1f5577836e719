// Every global of the library that has a constructor, in the one order of building; they are taken down in reverse.
// One translation unit is the only order that C++ guarantees. constexpr and plain static values stay home.
