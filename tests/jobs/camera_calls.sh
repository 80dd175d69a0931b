#!/bin/bash
# The jobs reach a camera through these operations and no others: camera_calls.sh NM LIBRARY
set -euo pipefail
allowed="KX_CC_CreateHandle KX_CC_OpenDevice KX_CC_CloseDevice KX_CC_DestroyHandle KX_CC_FeatureSave
KX_CC_FeatureLoad KX_CC_GetBoolValue KX_CC_GetEnumValue KX_CC_GetFloatValue KX_CC_GetIntValueEx
KX_CC_GetStringValue KX_CC_SetBoolValue KX_CC_SetEnumValue KX_CC_SetFloatValue KX_CC_SetIntValueEx
KX_CC_SetStringValue KX_CC_ReadMemory KX_CC_WriteMemory KX_XML_GetGenICamXML KX_XML_GetNodeAccessMode"
used=$("$1" --undefined-only "$2" 2>/dev/null | grep -oE ' KX_(CC|XML|[a-zA-Z])+_[A-Za-z0-9]*$' | tr -d ' ' | sort -u)
[ -n "$used" ] || { echo "no camera call found in $2"; exit 1; }
others=$(comm -23 <(echo "$used") <(tr ' ' '\n' <<<"$allowed" | sort -u))
[ -z "$others" ] || { echo "called beside the allowed operations:" $others; exit 1; }
