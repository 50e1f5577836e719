// Holds a dataset's lock from construction to destruction, so that several operations see one state of it.
#pragma once

#include "talvenor/dataset/DICOMObject.h"

class DICOMObjectLock
{
public:
   // theObject is borrowed and must outlive the guard.
   explicit DICOMObjectLock(const DICOMObject& theObject) : itsObject(theObject) { itsObject.Lock(); }
   ~DICOMObjectLock() { itsObject.Unlock(); }
   DICOMObjectLock(const DICOMObjectLock&) = delete;
   DICOMObjectLock& operator=(const DICOMObjectLock&) = delete;

private:
   const DICOMObject& itsObject;
};
