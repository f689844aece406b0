<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="bn" sourcelanguage="en">
<context>
    <name>CameraControls</name>
    <message>
        <source>Use a picture</source>
        <translation>একটি ছবি ব্যবহার করুন</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>আলো</translation>
    </message>
    <message>
        <source>Switch camera</source>
        <translation>ক্যামেরা বদলান</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>ছোট করে দেখুন</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>বড় করে দেখুন</translation>
    </message>
</context>
<context>
    <name>CameraList</name>
    <message>
        <source>Cameras</source>
        <translation>ক্যামেরার তালিকা</translation>
    </message>
</context>
<context>
    <name>CameraStatePanel</name>
    <message>
        <source>The camera was disconnected</source>
        <translation>ক্যামেরার সংযোগ বিচ্ছিন্ন হয়েছে</translation>
    </message>
    <message>
        <source>Another program uses the camera</source>
        <translation>অন্য একটি প্রোগ্রাম ক্যামেরাটি ব্যবহার করছে</translation>
    </message>
    <message>
        <source>This program may not use the camera</source>
        <translation>এই প্রোগ্রামের ক্যামেরা ব্যবহারের অনুমতি নেই</translation>
    </message>
    <message>
        <source>No camera was found</source>
        <translation>কোনো ক্যামেরা পাওয়া যায়নি</translation>
    </message>
    <message>
        <source>The camera “%1” was not found</source>
        <translation>“%1” ক্যামেরাটি পাওয়া যায়নি</translation>
    </message>
    <message>
        <source>The file “%1” was not found</source>
        <translation>“%1” ফাইলটি পাওয়া যায়নি</translation>
    </message>
    <message>
        <source>The file “%1” cannot be shown</source>
        <translation>“%1” ফাইলটি দেখানো যাচ্ছে না</translation>
    </message>
    <message>
        <source>The camera does not start</source>
        <translation>ক্যামেরাটি চালু হচ্ছে না</translation>
    </message>
    <message>
        <source>Plug it in again. It comes back by itself.</source>
        <translation>এটি আবার লাগান। ছবি নিজে থেকেই ফিরে আসবে।</translation>
    </message>
    <message>
        <source>Close that program. The camera then starts by itself.</source>
        <translation>সেই প্রোগ্রামটি বন্ধ করুন। তারপর ক্যামেরা নিজে থেকেই চালু হবে।</translation>
    </message>
    <message>
        <source>Try again, and allow it when you are asked.</source>
        <translation>আবার চেষ্টা করুন, আর অনুমতি চাওয়া হলে অনুমতি দিন।</translation>
    </message>
    <message>
        <source>Allow it in the settings of this device, under privacy, or ask whoever looks after the device.</source>
        <translation>এই যন্ত্রের সেটিংসের গোপনীয়তা অংশে অনুমতি দিন, অথবা যিনি যন্ত্রটির দেখাশোনা করেন তাঁকে বলুন।</translation>
    </message>
    <message>
        <source>Connect the camera. It starts by itself.</source>
        <translation>ক্যামেরা লাগান। এটি নিজে থেকেই চালু হবে।</translation>
    </message>
    <message>
        <source>It was chosen in place of a camera. Check its name.</source>
        <translation>এটি ক্যামেরার বদলে বেছে নেওয়া হয়েছিল। নামটি ঠিক আছে কি না দেখুন।</translation>
    </message>
    <message>
        <source>It was chosen in place of a camera, but is no picture or video that can be opened.</source>
        <translation>এটি ক্যামেরার বদলে বেছে নেওয়া হয়েছিল, কিন্তু এটি এমন কোনো ছবি বা ভিডিও নয় যা খোলা যায়।</translation>
    </message>
    <message>
        <source>It is tried again by itself. If that does not help, unplug the camera and plug it in again.</source>
        <translation>নিজে থেকেই আবার চেষ্টা করা হচ্ছে। তাতে কাজ না হলে ক্যামেরাটি খুলে আবার লাগান।</translation>
    </message>
    <message>
        <source>Trying again…</source>
        <translation>আবার চেষ্টা করা হচ্ছে…</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>আবার চেষ্টা করুন</translation>
    </message>
    <message>
        <source>Choose another camera</source>
        <translation>অন্য ক্যামেরা বেছে নিন</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>একটি ছবি ব্যবহার করুন</translation>
    </message>
</context>
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
<context>
    <name>JudgingPage</name>
    <message>
        <source>Photo</source>
        <translation>ছবি</translation>
    </message>
    <message>
        <source>Checking the photo...</source>
        <translation>ছবিটি যাচাই করা হচ্ছে...</translation>
    </message>
    <message>
        <source>This takes longer than usual.</source>
        <translation>স্বাভাবিকের চেয়ে বেশি সময় লাগছে।</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>বাতিল করুন</translation>
    </message>
</context>
<context>
    <name>PagePhoto</name>
    <message>
        <source>Photo</source>
        <translation>ছবি</translation>
    </message>
    <message>
        <source>Plus enlarges it, minus shows more of it</source>
        <translation>প্লাস চাপলে ছবি বড় হয়, মাইনাস চাপলে আরও বেশি দেখা যায়</translation>
    </message>
</context>
<context>
    <name>PassportScan</name>
    <message>
        <source>It is not a file on this machine.</source>
        <translation>এটি এই যন্ত্রের কোনো ফাইল নয়।</translation>
    </message>
    <message>
        <source>It is not a picture of a known format.</source>
        <translation>এটি কোনো পরিচিত ধরনের ছবি নয়।</translation>
    </message>
    <message>
        <source>It is damaged, too large, or may not be read.</source>
        <translation>এটি নষ্ট, খুব বড়, অথবা পড়ার অনুমতি নেই।</translation>
    </message>
    <message>
        <source>There is not enough memory for it.</source>
        <translation>এর জন্য যথেষ্ট মেমোরি নেই।</translation>
    </message>
    <message>
        <source>Is everything readable?</source>
        <translation>সবকিছু কি পড়া যাচ্ছে?</translation>
    </message>
</context>
<context>
    <name>PhotoFailedPage</name>
    <message>
        <source>The picture could not be opened.</source>
        <translation>ছবিটি খোলা যায়নি।</translation>
    </message>
    <message>
        <source>The photo could not be checked.</source>
        <translation>ছবিটি যাচাই করা যায়নি।</translation>
    </message>
    <message>
        <source>The photo could not be taken.</source>
        <translation>ছবি তোলা যায়নি।</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>আবার চেষ্টা করুন</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>একটি ছবি ব্যবহার করুন</translation>
    </message>
</context>
<context>
    <name>ScannerHelp</name>
    <message>
        <source>Opening the picture…</source>
        <translation>ছবিটি খোলা হচ্ছে…</translation>
    </message>
    <message>
        <source>That is not a file on this device</source>
        <translation>এটি এই যন্ত্রের কোনো ফাইল নয়</translation>
    </message>
    <message>
        <source>That file is not a picture</source>
        <translation>এই ফাইলটি কোনো ছবি নয়</translation>
    </message>
    <message>
        <source>That picture cannot be opened</source>
        <translation>এই ছবিটি খোলা যাচ্ছে না</translation>
    </message>
    <message>
        <source>There is not enough memory for that picture</source>
        <translation>এই ছবির জন্য যথেষ্ট মেমোরি নেই</translation>
    </message>
    <message>
        <source>Drop the picture to use it</source>
        <translation>ছবিটি ব্যবহার করতে এখানে ছেড়ে দিন</translation>
    </message>
    <message>
        <source>Taking a photo. Hold still.</source>
        <translation>ছবি তোলা হচ্ছে। স্থির রাখুন।</translation>
    </message>
    <message>
        <source>The camera is starting</source>
        <translation>ক্যামেরা চালু হচ্ছে</translation>
    </message>
    <message>
        <source>Passport in view</source>
        <translation>পাসপোর্ট দেখা যাচ্ছে</translation>
    </message>
    <message>
        <source>Place the passport&apos;s photo page in the frame</source>
        <translation>পাসপোর্টের ছবির পাতাটি ফ্রেমের মধ্যে রাখুন</translation>
    </message>
    <message>
        <source>Move closer</source>
        <translation>আরও কাছে আনুন</translation>
    </message>
    <message>
        <source>Move back a little</source>
        <translation>একটু দূরে সরান</translation>
    </message>
    <message>
        <source>Keep the whole page in the frame</source>
        <translation>পুরো পাতাটি ফ্রেমের মধ্যে রাখুন</translation>
    </message>
    <message>
        <source>Hold still</source>
        <translation>স্থির রাখুন</translation>
    </message>
    <message>
        <source>Turn on the light</source>
        <translation>আলো জ্বালান</translation>
    </message>
    <message>
        <source>More light is needed</source>
        <translation>আরও আলো দরকার</translation>
    </message>
    <message>
        <source>Tilt the page to avoid the reflection</source>
        <translation>প্রতিফলন এড়াতে পাতাটি একটু কাত করুন</translation>
    </message>
    <message>
        <source>Taking a photo. Hold still. Press Escape to cancel.</source>
        <translation>ছবি তোলা হচ্ছে। স্থির রাখুন। বাতিল করতে Escape চাপুন।</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>বাতিল করুন</translation>
    </message>
</context>
<context>
    <name>VerdictPage</name>
    <message>
        <source>No passport was recognised in this photo.</source>
        <translation>এই ছবিতে কোনো পাসপোর্ট শনাক্ত করা যায়নি।</translation>
    </message>
    <message>
        <source>This is a passport; its machine-readable lines were checked.</source>
        <translation>এটি একটি পাসপোর্ট; এর যন্ত্রপাঠ্য লাইনগুলো যাচাই করা হয়েছে।</translation>
    </message>
    <message>
        <source>This is a passport.</source>
        <translation>এটি একটি পাসপোর্ট।</translation>
    </message>
    <message>
        <source>Make more light, or go to a brighter place.</source>
        <translation>আলো বাড়ান, অথবা আরও আলোকিত জায়গায় যান।</translation>
    </message>
    <message>
        <source>Have the whole page in the picture, on a plain background.</source>
        <translation>সাদামাটা জায়গার ওপর রেখে পুরো পাতাটি ছবিতে আনুন।</translation>
    </message>
    <message>
        <source>Hold the camera closer, so that the page fills the picture.</source>
        <translation>ক্যামেরা আরও কাছে ধরুন, যাতে পাতাটি পুরো ছবি জুড়ে থাকে।</translation>
    </message>
    <message>
        <source>Hold the camera further away, so that all edges of the page are seen.</source>
        <translation>ক্যামেরা আরও দূরে ধরুন, যাতে পাতাটির সব কিনারা দেখা যায়।</translation>
    </message>
    <message>
        <source>Tilt the page or the lamp, so that nothing is reflected.</source>
        <translation>পাতা বা বাতিটি একটু কাত করুন, যাতে কিছুর প্রতিফলন না পড়ে।</translation>
    </message>
    <message>
        <source>Hold the camera still until the photo is taken.</source>
        <translation>ছবি তোলা না হওয়া পর্যন্ত ক্যামেরা স্থির রাখুন।</translation>
    </message>
    <message>
        <source>Open the passport at the page with the photo.</source>
        <translation>পাসপোর্টের ছবিসহ পাতাটি খুলুন।</translation>
    </message>
    <message>
        <source>Have the lines with many &lt; at the foot of the page in the picture.</source>
        <translation>পাতার নিচের অনেকগুলো &lt; চিহ্নযুক্ত লাইনগুলো ছবিতে আনুন।</translation>
    </message>
    <message>
        <source>Hold the camera closer to the lines at the foot of the page.</source>
        <translation>ক্যামেরা পাতার নিচের লাইনগুলোর আরও কাছে ধরুন।</translation>
    </message>
    <message>
        <source>Hold still, and keep fingers and reflections off the lines at the foot of the page.</source>
        <translation>স্থির রাখুন, আর পাতার নিচের লাইনগুলোর ওপর আঙুল বা প্রতিফলন পড়তে দেবেন না।</translation>
    </message>
    <message>
        <source>Have the lines at the foot of the page whole in the picture.</source>
        <translation>পাতার নিচের লাইনগুলো পুরোপুরি ছবিতে আনুন।</translation>
    </message>
    <message>
        <source>Take the photo again in even light: the lines at the foot of the page were not read beyond doubt.</source>
        <translation>সমান আলোতে ছবিটি আবার তুলুন: পাতার নিচের লাইনগুলো নিশ্চিতভাবে পড়া যায়নি।</translation>
    </message>
    <message>
        <source>Surname</source>
        <translation>বংশগত নাম</translation>
    </message>
    <message>
        <source>Given names</source>
        <translation>প্রদত্ত নাম</translation>
    </message>
    <message>
        <source>Document number</source>
        <translation>দলিল নম্বর</translation>
    </message>
    <message>
        <source>Nationality</source>
        <translation>জাতীয়তা</translation>
    </message>
    <message>
        <source>Issuing state</source>
        <translation>প্রদানকারী দেশ</translation>
    </message>
    <message>
        <source>Date of birth</source>
        <translation>জন্ম তারিখ</translation>
    </message>
    <message>
        <source>Sex</source>
        <translation>লিঙ্গ</translation>
    </message>
    <message>
        <source>Date of expiry</source>
        <translation>মেয়াদোত্তীর্ণের তারিখ</translation>
    </message>
    <message>
        <source>Female</source>
        <translation>নারী</translation>
    </message>
    <message>
        <source>Male</source>
        <translation>পুরুষ</translation>
    </message>
    <message>
        <source>Not specified</source>
        <translation>উল্লেখ নেই</translation>
    </message>
    <message>
        <source>To have its machine-readable lines checked too:</source>
        <translation>এর যন্ত্রপাঠ্য লাইনগুলোও যাচাই করাতে:</translation>
    </message>
    <message>
        <source>What helps:</source>
        <translation>আরও ভালো ফলের জন্য:</translation>
    </message>
    <message>
        <source>please check</source>
        <translation>মিলিয়ে দেখুন</translation>
    </message>
    <message>
        <source>Hide details</source>
        <translation>বিস্তারিত লুকান</translation>
    </message>
    <message>
        <source>Show details</source>
        <translation>বিস্তারিত দেখুন</translation>
    </message>
    <message>
        <source>Confidence: %1</source>
        <translation>নিশ্চয়তার মাত্রা: %1</translation>
    </message>
    <message>
        <source>These count the outline and the printed words. The machine-readable lines are read on their own.</source>
        <translation>এগুলোতে পাতার কিনারা ও ছাপা শব্দ গণনা করা হয়। যন্ত্রপাঠ্য লাইনগুলো আলাদাভাবে পড়া হয়।</translation>
    </message>
    <message>
        <source>Text that was read:</source>
        <translation>যে লেখা পড়া হয়েছে:</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>এগিয়ে যান</translation>
    </message>
    <message>
        <source>Scan again</source>
        <translation>আবার স্ক্যান করুন</translation>
    </message>
    <message>
        <source>Continue anyway</source>
        <translation>তবুও এগিয়ে যান</translation>
    </message>
</context>
<context>
    <name>kestrelid::demo::DemoSession</name>
    <message>
        <source>scanning</source>
        <translation>স্ক্যান</translation>
    </message>
    <message>
        <source>preview</source>
        <translation>প্রিভিউ</translation>
    </message>
    <message>
        <source>judging</source>
        <translation>যাচাই</translation>
    </message>
    <message>
        <source>result</source>
        <translation>ফলাফল</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>ব্যর্থ</translation>
    </message>
    <message>
        <source>Kestrelid demo: %1</source>
        <translation>Kestrelid ডেমো: %1</translation>
    </message>
    <message>
        <source>Thank you. The next passport can be scanned.</source>
        <translation>ধন্যবাদ। এবার পরের পাসপোর্টটি স্ক্যান করতে পারেন।</translation>
    </message>
    <message>
        <source>No camera was found: this is a drawn passport. You can drop a picture here instead.</source>
        <translation>কোনো ক্যামেরা পাওয়া যায়নি: এটি একটি আঁকা পাসপোর্ট। তার বদলে একটি ছবি টেনে এখানে ছাড়তে পারেন।</translation>
    </message>
</context>
<context>
    <name>kestrelid::scanner::PhotoImport</name>
    <message>
        <source>Pictures (%1)</source>
        <translation>ছবি (%1)</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>সব ফাইল (*)</translation>
    </message>
    <message>
        <source>Use a picture</source>
        <translation>একটি ছবি ব্যবহার করুন</translation>
    </message>
</context>
</TS>
