#!/usr/bin/env python3
"""check-sbom.py PREFIX: every bill of materials in PREFIX/share/sbom has what SPDX 2.3 demands, its references lead
somewhere, and its checksums are those of the files that are there; of all files, when there is a single one."""
import hashlib
import json
import pathlib
import re
import sys

DOCUMENT = ["spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo", "packages", "files"]
PACKAGE = ["SPDXID", "name", "versionInfo", "downloadLocation", "licenseConcluded", "licenseDeclared", "copyrightText"]
FILE = ["SPDXID", "fileName", "checksums", "licenseConcluded", "licenseInfoInFiles", "copyrightText"]


def missing(what, fields):
    return [f"{what.get('SPDXID', what)}: no {field}" for field in fields if not what.get(field)]


def check_files(document, prefix):
    for file in document["files"]:
        path = prefix / file["fileName"]
        if not path.is_file():
            yield f"{file['fileName']} is not there"
            continue
        content = path.read_bytes()
        for checksum in file["checksums"]:
            if hashlib.new(checksum["algorithm"], content).hexdigest() != checksum["checksumValue"]:
                yield f"{file['fileName']}: another {checksum['algorithm']}"
    sums = sorted(checksum["checksumValue"] for file in document["files"] for checksum in file["checksums"]
                  if checksum["algorithm"] == "SHA1")
    code = hashlib.sha1("".join(sums).encode()).hexdigest()
    if document["packages"][0]["packageVerificationCode"]["packageVerificationCodeValue"] != code:
        yield "another package verification code"


def check(document, prefix):
    faults = missing(document, DOCUMENT)
    if faults:
        return faults
    elements = [document, *document["packages"], *document["files"]]
    names = [element["SPDXID"] for element in elements]
    faults += [f"not an identifier, or not the only one of its name: {name}" for name in names
               if names.count(name) > 1 or not re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", name)]
    for package in document["packages"]:
        faults += missing(package, PACKAGE)
    for file in document["files"]:
        faults += missing(file, FILE)
    faults += [f"a relation to nothing: {relation}" for relation in document["relationships"]
               if not {relation["spdxElementId"], relation["relatedSpdxElement"]} <= set(names)]
    if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", document["creationInfo"]["created"]):
        faults.append("the time of creation")
    return faults + list(check_files(document, prefix))


def main():
    prefix = pathlib.Path(sys.argv[1])
    documents = sorted((prefix / "share/sbom").glob("*.spdx.json"))
    faults = [] if documents else [f"no bill of materials below {prefix}"]
    for path in documents:
        document = json.loads(path.read_text())
        faults += [f"{path.name}: {fault}" for fault in check(document, prefix)]
        if len(documents) == 1:
            named = {(prefix / file["fileName"]).resolve() for file in document["files"]}
            faults += [f"{path.name}: {file} is not in it" for file in prefix.rglob("*")
                       if file.is_file() and file != path and file.resolve() not in named]
    print("\n".join(faults) or f"{len(documents)} bills of materials are true")
    return bool(faults)


if __name__ == "__main__":
    sys.exit(main())
