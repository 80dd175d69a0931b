// Descriptions of a few features, for what the emulator's own cannot show.
#pragma once

#include <string>

namespace tests
{

// `root`: what the category lists ("<pFeature>Size</pFeature>"); `nodes`: the rest. The firmware version,
// which every file needs, is there.
inline std::string smallDescription(const std::string& root, const std::string& nodes)
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="M" VendorName="V" ToolTip="" StandardNameSpace="None"
    SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0" ProductGuid="0" VersionGuid="0"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
  <Category Name="Root"><pFeature>Settings</pFeature></Category>
  <Category Name="Settings">)" +
           root + R"(</Category>
  <StringReg Name="DeviceFirmwareVersion">
    <Address>0x10000</Address><Length>32</Length><AccessMode>RO</AccessMode><pPort>Device</pPort>
  </StringReg>
)" + nodes +
           R"(
  <Port Name="Device"/>
</RegisterDescription>)";
}

// A register of four bytes that is a feature's value.
inline std::string wordRegister(const std::string& name, const std::string& address)
{
    return "<IntReg Name=\"" + name + "\"><Address>" + address +
           "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>"
           "<Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>\n";
}

} // namespace tests
