<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>CommentSheet</name>
    <message numerus="yes">
        <source>%n character(s)</source>
        <translation>
            <numerusform>%n characters</numerusform>
            <numerusform>%n characters</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>InboxViewModel</name>
    <message numerus="yes">
        <source>Couldn&apos;t load any PRs (%n repo(s) failed). Check the Logs screen.</source>
        <translation>
            <numerusform>Couldn&apos;t load any PRs (%n repo(s) failed). Check the Logs screen.</numerusform>
            <numerusform>Couldn&apos;t load any PRs (%n repo(s) failed). Check the Logs screen.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>RelativeTime</name>
    <message numerus="yes">
        <source>%n yr. ago</source>
        <translation>
            <numerusform>%n yr. ago</numerusform>
            <numerusform>%n yr. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n yr.</source>
        <translation>
            <numerusform>in %n yr.</numerusform>
            <numerusform>in %n yr.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n year(s) ago</source>
        <translation>
            <numerusform>%n year ago</numerusform>
            <numerusform>%n years ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n year(s)</source>
        <translation>
            <numerusform>in %n year</numerusform>
            <numerusform>in %n years</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n mo. ago</source>
        <translation>
            <numerusform>%n mo. ago</numerusform>
            <numerusform>%n mo. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n mo.</source>
        <translation>
            <numerusform>in %n mo.</numerusform>
            <numerusform>in %n mo.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n month(s) ago</source>
        <translation>
            <numerusform>%n month ago</numerusform>
            <numerusform>%n months ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n month(s)</source>
        <translation>
            <numerusform>in %n month</numerusform>
            <numerusform>in %n months</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n wk. ago</source>
        <translation>
            <numerusform>%n wk. ago</numerusform>
            <numerusform>%n wk. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n wk.</source>
        <translation>
            <numerusform>in %n wk.</numerusform>
            <numerusform>in %n wk.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n week(s) ago</source>
        <translation>
            <numerusform>%n week ago</numerusform>
            <numerusform>%n weeks ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n week(s)</source>
        <translation>
            <numerusform>in %n week</numerusform>
            <numerusform>in %n weeks</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n day(s) ago</source>
        <translation>
            <numerusform>%n day ago</numerusform>
            <numerusform>%n days ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n day(s)</source>
        <translation>
            <numerusform>in %n day</numerusform>
            <numerusform>in %n days</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hr. ago</source>
        <translation>
            <numerusform>%n hr. ago</numerusform>
            <numerusform>%n hr. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n hr.</source>
        <translation>
            <numerusform>in %n hr.</numerusform>
            <numerusform>in %n hr.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hour(s) ago</source>
        <translation>
            <numerusform>%n hour ago</numerusform>
            <numerusform>%n hours ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n hour(s)</source>
        <translation>
            <numerusform>in %n hour</numerusform>
            <numerusform>in %n hours</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n min. ago</source>
        <translation>
            <numerusform>%n min. ago</numerusform>
            <numerusform>%n min. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n min.</source>
        <translation>
            <numerusform>in %n min.</numerusform>
            <numerusform>in %n min.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n minute(s) ago</source>
        <translation>
            <numerusform>%n minute ago</numerusform>
            <numerusform>%n minutes ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n minute(s)</source>
        <translation>
            <numerusform>in %n minute</numerusform>
            <numerusform>in %n minutes</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n sec. ago</source>
        <translation>
            <numerusform>%n sec. ago</numerusform>
            <numerusform>%n sec. ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n sec.</source>
        <translation>
            <numerusform>in %n sec.</numerusform>
            <numerusform>in %n sec.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n second(s) ago</source>
        <translation>
            <numerusform>%n second ago</numerusform>
            <numerusform>%n seconds ago</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in %n second(s)</source>
        <translation>
            <numerusform>in %n second</numerusform>
            <numerusform>in %n seconds</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ShareSheet</name>
    <message numerus="yes">
        <source>%n line(s) · %1 KB</source>
        <translation>
            <numerusform>%n line · %1 KB</numerusform>
            <numerusform>%n lines · %1 KB</numerusform>
        </translation>
    </message>
</context>
</TS>
