#pragma once

#include "tools/package_names.h"
#include "tools/package_reader.h"
#include "tools/text_table.h"

#include <ostream>
#include <string>

namespace talvik::ctl {

/// Packages for people.
class PackageText : public PackageVisitor {
public:
    /// All must outlive this object.
    PackageText(std::ostream& out, const PackageNames& names, const TableStyle& style)
        : out_(out),
          names_(names),
          style_(style)
    {
    }

    void begin(const CapturedPackage& package) override;
    void record(const CapturedRecord& record) override;
    void end(const CapturedPackage& package, const PackageEnd& end) override;

private:
    void printFault(const PackageFault& fault);
    void print(const std::string& text);

    std::ostream& out_;
    const PackageNames& names_;
    const TableStyle& style_;
};

/// A JSON object a line, one a package: {"package", "offset", "header", "records": [{"record",
/// "offset", "id", "name", "length", "accepted", "cells": [{"offset", "tag", "name", "type",
/// "typeName", "length", "hex", "number", "text"}], "fault"}], "size", "accepted", "faults":
/// [{"offset", "reason"}]}. Names are null where there is none, as are "number", a text, for
/// what is none of 1 to 8 bytes, and "text" for what is none.
class PackageJson : public PackageVisitor {
public:
    PackageJson(std::ostream& out, const PackageNames& names) : out_(out), names_(names) {}

    void begin(const CapturedPackage& package) override;
    void record(const CapturedRecord& record) override;
    void end(const CapturedPackage& package, const PackageEnd& end) override;

private:
    std::ostream& out_;
    const PackageNames& names_;
    bool first_ = true;  // record of its package
};

}  // namespace talvik::ctl
