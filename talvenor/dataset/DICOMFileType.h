// The encoding of a DICOM file that a dataset is saved to. Hosts store the numbers.
#pragma once

enum DICOMFileType : int
{
   LittleEndianImplicitFile = 1,
   GivenOrLittleEndianExplicitFile = 2, // the transfer syntax that is given, little endian explicit when none is
   BigEndianExplicitFile = 3
};
