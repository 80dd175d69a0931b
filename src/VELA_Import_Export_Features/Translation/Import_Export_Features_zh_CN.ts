<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>ImportExportFeaturesSelectedWidget</name>
    <message>
        <source>Port ID</source>
        <translation>端口ID</translation>
    </message>
    <message>
        <source>Model Name</source>
        <translation>型号名称</translation>
    </message>
    <message>
        <source>Device User ID</source>
        <translation>设备用户ID</translation>
    </message>
    <message>
        <source>Serial Number</source>
        <translation>序列号</translation>
    </message>
    <message>
        <source>MAC Address</source>
        <translation>MAC地址</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Operation Status</source>
        <translation>操作状态</translation>
    </message>
    <message>
        <source>All</source>
        <translation>全部</translation>
    </message>
</context>
<context>
    <name>MainWidget</name>
    <message>
        <source>Import/Export Features</source>
        <translation>导入/导出属性</translation>
    </message>
    <message>
        <source>Import</source>
        <translation>导入</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>导出</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>返回</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>失败</translation>
    </message>
    <message>
        <source>Left during their jobs :</source>
        <translation>任务期间离开的设备：</translation>
    </message>
    <message>
        <source>PortID</source>
        <translation>端口ID</translation>
    </message>
    <message>
        <source>Model Name</source>
        <translation>型号名称</translation>
    </message>
    <message>
        <source>Device User ID</source>
        <translation>设备用户ID</translation>
    </message>
    <message>
        <source>Serial Number</source>
        <translation>序列号</translation>
    </message>
    <message>
        <source>Interface Type</source>
        <translation>接口类型</translation>
    </message>
    <message>
        <source>MAC Address</source>
        <translation>MAC地址</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>状态</translation>
    </message>
    <message>
        <source>Operation Status</source>
        <translation>操作状态</translation>
    </message>
    <message>
        <source> Importing</source>
        <translation> 正在导入</translation>
    </message>
    <message>
        <source> Imported.</source>
        <translation> 导入成功</translation>
    </message>
    <message>
        <source> Exporting</source>
        <translation> 正在导出</translation>
    </message>
    <message>
        <source> Exported.</source>
        <translation> 导出成功</translation>
    </message>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Importing features...</source>
        <translation>正在导入属性...</translation>
    </message>
    <message>
        <source>Exporting features...</source>
        <translation>正在导出属性...</translation>
    </message>
    <message>
        <source>Select Import File</source>
        <translation>选择导入文件</translation>
    </message>
    <message>
        <source>Import File(*.fpk)</source>
        <translation>导入文件(*.fpk)</translation>
    </message>
    <message>
        <source>Export Features</source>
        <translation>导出属性</translation>
    </message>
    <message>
        <source>Start importing...</source>
        <translation>开始导入...</translation>
    </message>
    <message>
        <source>Start exporting...</source>
        <translation>开始导出...</translation>
    </message>
    <message>
        <source>The Reasons of Failure :</source>
        <translation>失败原因：</translation>
    </message>
    <message>
        <source>Imported.</source>
        <translation>已导入。</translation>
    </message>
    <message>
        <source>Exported.</source>
        <translation>已导出。</translation>
    </message>
    <message>
        <source>Importing process is over.</source>
        <translation>导入过程结束。</translation>
    </message>
    <message>
        <source>Exporting process is over.</source>
        <translation>导出过程结束。</translation>
    </message>
    <message>
        <source>In Use</source>
        <translation>使用中</translation>
    </message>
    <message>
        <source>Free</source>
        <translation>空闲</translation>
    </message>
    <message>
        <source>Unreachable</source>
        <translation>不可达</translation>
    </message>
    <message>
        <source>Operation failed. You can operate %1 devices at most.</source>
        <translation>操作失败。最多可操作%1台设备。</translation>
    </message>
</context>
<context>
    <name>QOperateThread</name>
    <message>
        <source>Failed to export features.Failed to open device.</source>
        <translation>导出属性失败。打开设备失败。</translation>
    </message>
    <message>
        <source>Failed to save feature.%1</source>
        <translation>保存属性失败。%1</translation>
    </message>
    <message>
        <source>Failed to export features.Failed to open File.</source>
        <translation>导出属性失败。打开文件失败。</translation>
    </message>
    <message>
        <source>Failed to load feature.%1</source>
        <translation>加载属性失败。%1</translation>
    </message>
    <message>
        <source>Failed to import features.Failed to open device.</source>
        <translation>导入属性失败。打开设备失败。</translation>
    </message>
    <message>
        <source>Failed to import features.Failed to open xml.</source>
        <translation>导入属性失败。打开 XML 文件失败。</translation>
    </message>
    <message>
        <source>Failed to import features.Failed to load xml.</source>
        <translation>导入属性失败。加载 XML 文件失败。</translation>
    </message>
    <message>
        <source>Failed to import features. Camera models mismatch.</source>
        <translation>导入属性失败。相机型号不匹配。</translation>
    </message>
    <message>
        <source>Failed to import features. Possible version incompatibility.</source>
        <translation>导入属性失败。版本可能不兼容。</translation>
    </message>
    <message>
        <source>Out of memory.</source>
        <translation>内存不足。</translation>
    </message>
    <message>
        <source>No thread could be started.</source>
        <translation>无法启动线程。</translation>
    </message>
</context>
</TS>
