// Composes the bytes of datasets to measure with: what a file of that kind holds, in any of the native encodings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class DatasetBytes
{
public:
   struct Encoding
   {
      const char* itsName;
      const char* itsTransferSyntaxUID;
      bool itsIsExplicit;
      bool itsIsBigEndian;
      bool itsHasDefinedLengths; // of sequences and items
   };

   explicit DatasetBytes(const Encoding& theEncoding) : itsEncoding(theEncoding) {}

   void Text(std::uint32_t theTag, const char* theVR, std::string_view theText);
   void Short(std::uint32_t theTag, std::uint16_t theValue);
   void Bytes(std::uint32_t theTag, const char* theVR, std::string_view theBytes);

   // theItems holds items, each made by Item.
   void Sequence(std::uint32_t theTag, const std::string& theItems);
   std::string Item(const DatasetBytes& theContent) const;

   const std::string& GetBytes() const { return itsBytes; }
   size_t GetElementCount() const { return itsElements; }

   // A Part 10 file around the dataset.
   std::string File() const;

   // Adds what the content of an item counts.
   void Count(const DatasetBytes& theContent) { itsElements += theContent.itsElements; }

private:
   void Header(std::uint32_t theTag, const char* theVR, std::uint32_t theLength);
   void Number(std::string& theBytes, std::uint64_t theValue, int theSize) const;
   std::string Tag(std::uint32_t theTag) const;

   const Encoding& itsEncoding;
   std::string itsBytes;
   size_t itsElements = 0;
};

inline constexpr DatasetBytes::Encoding kExplicit = {"explicit", "1.2.840.10008.1.2.1", true, false, false};
inline constexpr DatasetBytes::Encoding kExplicitDefined = {"explicit/defined", "1.2.840.10008.1.2.1", true, false,
                                                            true};
inline constexpr DatasetBytes::Encoding kImplicit = {"implicit", "1.2.840.10008.1.2", false, false, false};
inline constexpr DatasetBytes::Encoding kImplicitDefined = {"implicit/defined", "1.2.840.10008.1.2", false, false,
                                                            true};
inline constexpr DatasetBytes::Encoding kBigEndian = {"big endian", "1.2.840.10008.1.2.2", true, true, false};

// A CT image header of 120 elements and, with thePixelBytes, pixel data.
DatasetBytes CTImage(const DatasetBytes::Encoding& theEncoding, size_t thePixelBytes);

// A structured report of theItems content items, nested up to seven deep.
DatasetBytes Report(const DatasetBytes::Encoding& theEncoding, size_t theItems);

// Writes a file that lives as long as the process and returns its name.
std::string TemporaryFile(const std::string& theBytes);

// Loads the dictionaries of the source tree, once.
void LoadDictionaries();
