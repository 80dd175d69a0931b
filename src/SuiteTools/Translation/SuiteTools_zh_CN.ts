<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>SuiteTools</name>
    <message>
        <source>Open File</source>
        <translation>打开文件</translation>
    </message>
</context>
</TS>
