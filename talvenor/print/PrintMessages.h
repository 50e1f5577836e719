// The SOP classes of print management, each with its messages (PS3.4 H.4). No data: any thread may use one object, each
// on an association of its own.
#pragma once

#include "talvenor/dictionary/UID.h"
#include "talvenor/print/StandardAdvancedBox.h"
#include "talvenor/print/StandardBox.h"
#include "talvenor/print/StandardFilm.h"
#include "talvenor/print/StandardStatus.h"

namespace PrintSOPClass
{
inline constexpr char kFilmSession[] = "1.2.840.10008.5.1.1.1";
inline constexpr char kFilmBox[] = "1.2.840.10008.5.1.1.2";
inline constexpr char kGrayscaleImageBox[] = "1.2.840.10008.5.1.1.4";
inline constexpr char kColorImageBox[] = "1.2.840.10008.5.1.4.1"; // see kStandardColorImageBox
inline constexpr char kReferencedImageBox[] = "1.2.840.10008.5.1.4.2";
inline constexpr char kAnnotationBox[] = "1.2.840.10008.5.1.1.15";
inline constexpr char kVOILUTBox[] = "1.2.840.10008.5.1.1.22";
inline constexpr char kPresentationLUT[] = "1.2.840.10008.5.1.1.23";
inline constexpr char kImageOverlayBox[] = "1.2.840.10008.5.1.1.24";
inline constexpr char kPrintOverlayBox[] = "1.2.840.10008.5.1.1.24.1";
inline constexpr char kPrinter[] = "1.2.840.10008.5.1.1.16";
inline constexpr char kPrintJob[] = "1.2.840.10008.5.1.1.14";

// An addition: the Basic Color Image Box as PS3.6 has it. kColorImageBox lacks a part of it.
inline constexpr char kStandardColorImageBox[] = "1.2.840.10008.5.1.1.4.1";
} // namespace PrintSOPClass

template <class Messages, const char* SOPClass>
class PrintMessagesOf : public Messages
{
public:
   int uGetUID(UID& theUID) const override
   {
      theUID.Set(SOPClass, -1);
      return 1;
   }
};

class TALVENOR_API BasicFilmSession : public PrintMessagesOf<StandardFilm, PrintSOPClass::kFilmSession>
{};
class TALVENOR_API BasicFilmBox : public PrintMessagesOf<StandardFilm, PrintSOPClass::kFilmBox>
{};
class TALVENOR_API BasicGrayscaleImageBox : public PrintMessagesOf<StandardBox, PrintSOPClass::kGrayscaleImageBox>
{};
class TALVENOR_API BasicColorImageBox : public PrintMessagesOf<StandardBox, PrintSOPClass::kColorImageBox>
{};
class TALVENOR_API StandardColorImageBox : public PrintMessagesOf<StandardBox, PrintSOPClass::kStandardColorImageBox>
{};
class TALVENOR_API ReferencedImageBox : public PrintMessagesOf<StandardBox, PrintSOPClass::kReferencedImageBox>
{};
class TALVENOR_API BasicAnnotationBox : public PrintMessagesOf<StandardBox, PrintSOPClass::kAnnotationBox>
{};
class TALVENOR_API VOILUTBox : public PrintMessagesOf<StandardAdvancedBox, PrintSOPClass::kVOILUTBox>
{};
class TALVENOR_API PresentationLUTBox : public PrintMessagesOf<StandardAdvancedBox, PrintSOPClass::kPresentationLUT>
{};
class TALVENOR_API ImageOverlayBox : public PrintMessagesOf<StandardAdvancedBox, PrintSOPClass::kImageOverlayBox>
{};
class TALVENOR_API PrintOverlayBox : public PrintMessagesOf<StandardAdvancedBox, PrintSOPClass::kPrintOverlayBox>
{};
class TALVENOR_API BasicPrinter : public PrintMessagesOf<StandardStatus, PrintSOPClass::kPrinter>
{};
class TALVENOR_API BasicPrintJob : public PrintMessagesOf<StandardStatus, PrintSOPClass::kPrintJob>
{};
