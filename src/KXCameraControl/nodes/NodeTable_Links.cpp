// What nodes refer to: other nodes by name, and formulas.
#include "KXCameraControl/nodes/NodeTable.h"

namespace kx
{

namespace
{

bool isReference(Tag tag)
{
    switch (tag) {
    case Tag::pAddress:
    case Tag::pIndex:
    case Tag::pLength:
    case Tag::pPort:
    case Tag::pValue:
    case Tag::pValueCopy:
    case Tag::pValueIndexed:
    case Tag::pValueDefault:
    case Tag::pMin:
    case Tag::pMax:
    case Tag::pInc:
    case Tag::pCommandValue:
    case Tag::pIsImplemented:
    case Tag::pIsAvailable:
    case Tag::pIsLocked:
    case Tag::pVariable:
    case Tag::pInvalidator:
        return true;
    default:
        return false;
    }
}

using Arithmetic = formula::NumberMachine::Arithmetic;

CompiledFormula compile(const Property* source, const formula::Scope& scope, Arithmetic arithmetic)
{
    CompiledFormula result;
    try {
        if (!source)
            throw FormulaError{"it is missing"};
        result.formula = std::make_unique<formula::NumberMachine>(source->text, scope, arithmetic);
    } catch (const FormulaError& error) {
        result.problem = error.text;
    }
    return result;
}

} // namespace

bool isValueReference(Tag tag)
{
    return tag == Tag::pValue || tag == Tag::pValueIndexed || tag == Tag::pValueDefault;
}

void NodeTable::resolveLinks()
{
    const auto named = [this](const std::string& name) {
        const auto it = m_byName.find(name);
        return it == m_byName.end() ? nullptr : it->second;
    };
    for (Node& node : m_nodes) {
        for (Property& property : node.properties) {
            if (isReference(property.tag) && !property.target)
                property.target = named(property.text);
            if (!property.offsetName.empty())
                property.offsetTarget = named(property.offsetName);
        }
    }
}

void NodeTable::compileFormulas()
{
    std::size_t characters = maximumFormulas;
    for (Node& node : m_nodes) {
        const bool isKnife = node.kind == NodeKind::IntSwissKnife || node.kind == NodeKind::SwissKnife;
        const bool isConverter = node.kind == NodeKind::IntConverter || node.kind == NodeKind::Converter;
        if (!isKnife && !isConverter)
            continue;
        const bool isInteger = node.kind == NodeKind::IntSwissKnife || node.kind == NodeKind::IntConverter;
        const Arithmetic arithmetic = isInteger ? Arithmetic::Integer : Arithmetic::Real;
        formula::Scope scope;
        scope.characters = &characters;
        for (const Property& property : node.properties) {
            if (property.tag == Tag::pVariable)
                scope.variables.push_back(property.attribute);
            else if (property.tag == Tag::Constant || property.tag == Tag::Expression)
                scope.expressions.emplace(property.attribute, property.text);
        }
        if (isKnife) {
            node.from = compile(node.find(Tag::Formula), scope, arithmetic);
            continue;
        }
        // The converter's input stands last.
        scope.variables.emplace_back("TO");
        node.from = compile(node.find(Tag::FormulaFrom), scope, arithmetic);
        scope.variables.back() = "FROM";
        node.to = compile(node.find(Tag::FormulaTo), scope, arithmetic);
    }
}

} // namespace kx
