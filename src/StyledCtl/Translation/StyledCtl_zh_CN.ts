<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>ORBCustomLoadingDialog</name>
    <message>
        <source>Please wait...</source>
        <translation>请稍候...</translation>
    </message>
</context>
<context>
    <name>ORBCustomMessageBox</name>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Hide details</source>
        <translation>隐藏详情</translation>
    </message>
    <message>
        <source>Show details</source>
        <translation>显示详情</translation>
    </message>
    <message>
        <source>Details</source>
        <translation>详情</translation>
    </message>
</context>
<context>
    <name>ORBCustomSaveDoneHintDlg</name>
    <message>
        <source>Prompt</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Open folder</source>
        <translation>打开文件夹</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>确定</translation>
    </message>
    <message>
        <source>Saved as</source>
        <translation>保存位置</translation>
    </message>
    <message>
        <source>Do not show this again</source>
        <translation>不再显示</translation>
    </message>
    <message>
        <source>The folder could not be opened.</source>
        <translation>无法打开文件夹。</translation>
    </message>
</context>
<context>
    <name>ORBCustomSortHeaderView</name>
    <message>
        <source>Column headers</source>
        <translation>列标题</translation>
    </message>
</context>
<context>
    <name>ORBCustomTableWidget</name>
    <message>
        <source>Selected</source>
        <translation>选择</translation>
    </message>
</context>
<context>
    <name>ORBCustomTitleBar</name>
    <message>
        <source>Minimize</source>
        <translation>最小化</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>还原</translation>
    </message>
    <message>
        <source>Maximize</source>
        <translation>最大化</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
</context>
</TS>
