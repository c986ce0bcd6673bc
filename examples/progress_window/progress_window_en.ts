<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>Checksum</name>
    <message>
        <source>Такого файла нет.</source>
        <translation>There is no such file.</translation>
    </message>
    <message>
        <source>Нет права читать этот файл.</source>
        <translation>You may not read this file.</translation>
    </message>
</context>
<context>
    <name>ProgressWindow</name>
    <message>
        <source>Фоновые задачи</source>
        <translation>Background tasks</translation>
    </message>
    <message>
        <source>Контрольные суммы файлов...</source>
        <translation>Checksums of files...</translation>
    </message>
    <message>
        <source>Файлов: %1</source>
        <translation>Files: %1</translation>
    </message>
</context>
<context>
    <name>TaskRow</name>
    <message>
        <source>Продолжить</source>
        <translation>Resume</translation>
    </message>
    <message>
        <source>Пауза</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Убрать</source>
        <translation>Dismiss</translation>
    </message>
    <message>
        <source>Отмена</source>
        <translation>Cancel</translation>
    </message>
</context>
</TS>
