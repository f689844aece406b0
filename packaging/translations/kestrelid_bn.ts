<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="bn" sourcelanguage="en">
<context>
    <name>DocumentScannerView</name>
    <message>
        <source>Scan your passport</source>
        <translation>আপনার পাসপোর্ট স্ক্যান করুন</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>বন্ধ করুন</translation>
    </message>
    <message>
        <source>Live camera picture</source>
        <translation>ক্যামেরার সরাসরি ছবি</translation>
    </message>
    <message>
        <source>Camera access is required</source>
        <translation>ক্যামেরা ব্যবহারের অনুমতি প্রয়োজন</translation>
    </message>
    <message>
        <source>Take photo</source>
        <translation>ছবি তুলুন</translation>
    </message>
    <message>
        <source>Camera is not ready</source>
        <translation>ক্যামেরা প্রস্তুত নয়</translation>
    </message>
    <message>
        <source>Ready to take a photo</source>
        <translation>ছবি তোলার জন্য প্রস্তুত</translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation>পাসপোর্ট দেখা যাচ্ছে</translation>
    </message>
</context>
<context>
    <name>ImagePreviewView</name>
    <message>
        <source>Close</source>
        <translation>বন্ধ করুন</translation>
    </message>
    <message>
        <source>Photo</source>
        <translation>ছবি</translation>
    </message>
    <message>
        <source>Image not provided</source>
        <translation>ছবি দেওয়া হয়নি</translation>
    </message>
    <message>
        <source>Retake</source>
        <translation>আবার তুলুন</translation>
    </message>
    <message>
        <source>Confirm</source>
        <translation>নিশ্চিত করুন</translation>
    </message>
</context>
</TS>
