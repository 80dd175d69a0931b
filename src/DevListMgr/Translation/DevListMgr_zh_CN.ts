<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>VELADeviceTree</name>
    <message>
        <source>GigE Vision</source>
        <translation>GigE Vision</translation>
    </message>
    <message>
        <source>USB3 Vision</source>
        <translation>USB3 Vision</translation>
    </message>
    <message>
        <source>Camera Link</source>
        <translation>Camera Link</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>其他</translation>
    </message>
    <message>
        <source>All Devices</source>
        <translation>所有设备</translation>
    </message>
    <message>
        <source>Device Tree</source>
        <translation>设备树</translation>
    </message>
</context>
</TS>
