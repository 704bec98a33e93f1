/// \file
/// JSON files and checks of what they hold, which complain in a line.
#pragma once

#include "OSGBase.h"

#include <QJsonValue>
#include <QStringList>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace ztExamples
{

/// Thrown with a line about a value, "expected …" for example. Whoever knows the value's place adds it.
using Complaint = std::runtime_error;

[[noreturn]] void complain(QString const& text);

/// As compact JSON, on one line and cut if it is long.
QString shown(QJsonValue const& value);

/// A key without quotes, and with escapes where it would break the line.
QString shownKey(QString const& key);

/// Complains of a value unless a condition holds.
void expect(bool condition, QString const& expected, QJsonValue const& value);

[[noreturn]] void complainOfKey(QString const& key, std::vector<std::string> const& known);

/// Runs a check and puts a place in front of what it complains about.
template <class Check>
void at(QString const& place, Check const& check)
{
    try
    {
        check();
    }
    catch (Complaint const& complaint)
    {
        complain(place + ": " + QString::fromUtf8(complaint.what()));
    }
}

/// What a file holds, which says each key once.
QJsonValue readJson(QString const& path);

/// The value as one of a type; they complain of any other.
float toFraction(QJsonValue const& value);
std::array<float, 4> toFractions(QJsonValue const& value);
int toWhole(QJsonValue const& value, int least, int most);
osg::Color3f toColor3(QJsonValue const& value, QString const& expected = "three numbers from 0 to 1");
osg::Color4f toColor4(QJsonValue const& value);
/// One component for all or three.
osg::Color3f toTransparency(QJsonValue const& value);
/// Any numbers.
osg::Vec2f toVector(QJsonValue const& value);
/// One number for both or two, none below 0.
osg::Vec2f toPadding(QJsonValue const& value);
/// Above 0.
float toSize(QJsonValue const& value);
/// Without zero bytes.
QString toText(QJsonValue const& value);
std::string toUtf8(QJsonValue const& value);
bool toBool(QJsonValue const& value);
/// The number of the word that the value is.
int toChoice(QJsonValue const& value, QStringList const& words);

} // namespace ztExamples
