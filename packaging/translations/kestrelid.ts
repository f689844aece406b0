<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" sourcelanguage="en">
<context>
    <name>DocumentScannerView</name>
    <message>
        <source>Scan your passport</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Live camera picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera access is required</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Take photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Camera is not ready</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Ready to take a photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImagePreviewView</name>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Photo</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Image not provided</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Retake</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
