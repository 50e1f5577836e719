// The part of a shared node that a dataset's own node does not have: its name and its children, which are shared nodes
// of the next level (owned) and the nodes of normalised datasets (borrowed: they take themselves out when they go).
// Guarded by the node's lock, except for the name, which never changes.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "talvenor/dataset/DICOMNode.h"
#include "talvenor/io/TNEndian.h"

struct DICOMNode::Shared
{
   // Names are looked up: a cluster may hold thousands of studies. Values are read in the byte order of the dataset
   // that asks, so datasets of different byte order must not meet in one node.
   using NodesByName = std::unordered_map<std::string, DICOMNode*>;
   NodesByName& ByName(TNEndian::EndianType theEndian)
   {
      return theEndian == TNEndian::LittleEndian ? itsLittleEndianNodes : itsBigEndianNodes;
   }

   const std::string itsName;
   std::vector<std::unique_ptr<DICOMNode>> itsNodes = {};
   NodesByName itsLittleEndianNodes = {};
   NodesByName itsBigEndianNodes = {};
   std::vector<DICOMNode*> itsDatasets = {}; // each knows its place here
};
