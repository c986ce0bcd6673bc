<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
<context>
    <name>CrashReport</name>
    <message>
        <source>в имени файла допустимы только %p, %t и %%</source>
        <translation>a file name may only have %p, %t and %%</translation>
    </message>
    <message>
        <source>имя файла слишком длинное</source>
        <translation>the file name is too long</translation>
    </message>
    <message>
        <source>Отчёт о сбое %1 не прочитан: %2</source>
        <translation>Crash report %1 was not read: %2</translation>
    </message>
    <message>
        <source>Отчёты о сбоях не могут записываться в %1: %2</source>
        <translation>Crash reports cannot be written to %1: %2</translation>
    </message>
    <message>
        <source>каталог недоступен</source>
        <translation>the directory cannot be read</translation>
    </message>
    <message>
        <source>это не обычный файл</source>
        <translation>not a regular file</translation>
    </message>
    <message>
        <source>файл слишком велик</source>
        <translation>the file is too large</translation>
    </message>
    <message>
        <source>это не отчёт о сбое</source>
        <translation>not a crash report</translation>
    </message>
</context>
<context>
    <name>DateFormats</name>
    <message>
        <source>&apos;%1&apos; может быть и %2, и %3</source>
        <translation>&apos;%1&apos; may be both %2 and %3</translation>
    </message>
    <message>
        <source>&apos;%1&apos; — не дата</source>
        <translation>&apos;%1&apos; is no date</translation>
    </message>
    <message>
        <source>&apos;%1&apos; — не дата; пример даты: %2</source>
        <translation>&apos;%1&apos; is no date; a date is, for example, %2</translation>
    </message>
</context>
<context>
    <name>ErrorTracer</name>
    <message>
        <source>Замечания: %1</source>
        <translation>Notes: %1</translation>
    </message>
    <message>
        <source>Предупреждения: %1</source>
        <translation>Warnings: %1</translation>
    </message>
    <message>
        <source>Ошибки: %1</source>
        <translation>Errors: %1</translation>
    </message>
    <message>
        <source>Прервало работу: %1</source>
        <translation>Ended the work: %1</translation>
    </message>
    <message>
        <source>Что пошло не так</source>
        <translation>What went wrong</translation>
    </message>
    <message>
        <source>причина:</source>
        <translation>cause:</translation>
    </message>
    <message>
        <source>и ещё %1</source>
        <translation>and %1 more</translation>
    </message>
    <message>
        <source>и ещё %1, которые не показаны</source>
        <translation>and %1 more that are not shown</translation>
    </message>
    <message>
        <source>ru</source>
        <extracomment>The language of these texts, as the attribute lang of HTML has it</extracomment>
        <translation>en</translation>
    </message>
    <message>
        <source>Ошибок нет.</source>
        <translation>No errors.</translation>
    </message>
    <message>
        <source>Неизвестная ошибка</source>
        <translation>Unknown error</translation>
    </message>
    <message>
        <source>Ошибка без описания</source>
        <translation>Error without a description</translation>
    </message>
    <message>
        <source>строка %1</source>
        <translation>line %1</translation>
    </message>
</context>
<context>
    <name>GroupTask</name>
    <message>
        <source>неизвестная ошибка</source>
        <translation>unknown error</translation>
    </message>
    <message>
        <source>Часть %1</source>
        <translation>Part %1</translation>
    </message>
    <message>
        <source>Задача &apos;%1&apos; не может быть частью группы: у неё есть владелец, она живёт в другом потоке или уже запущена</source>
        <translation>The task &apos;%1&apos; cannot be a part of the group: it has an owner, lives in another thread or was started before</translation>
    </message>
    <message>
        <source>Группа задач уже запущена</source>
        <translation>The group of tasks was started before</translation>
    </message>
    <message>
        <source>Части группы ждут друг друга по кругу: %1</source>
        <translation>Parts of the group wait for each other in a circle: %1</translation>
    </message>
</context>
<context>
    <name>LockInfo</name>
    <message>
        <source>нет папки &apos;%1&apos;</source>
        <translation>there is no folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>&apos;%1&apos; — не папка</source>
        <translation>&apos;%1&apos; is not a folder</translation>
    </message>
    <message>
        <source>нет прав на вход в папку &apos;%1&apos;</source>
        <translation>you may not enter the folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>ссылки ведут по кругу</source>
        <translation>the links lead in a circle</translation>
    </message>
    <message>
        <source>имя слишком длинное</source>
        <translation>the name is too long</translation>
    </message>
    <message>
        <source>это папка</source>
        <translation>it is a folder</translation>
    </message>
    <message>
        <source>нет прав на запись в него</source>
        <translation>you may not write to it</translation>
    </message>
    <message>
        <source>он отмечен как доступный только для чтения</source>
        <translation>it is marked as read-only</translation>
    </message>
    <message>
        <source>он отмечен как неизменяемый</source>
        <translation>it is marked as immutable</translation>
    </message>
    <message>
        <source>он отмечен как доступный только для дополнения</source>
        <translation>it is marked so that it can only be extended</translation>
    </message>
    <message>
        <source>диск подключён только для чтения</source>
        <translation>the disk is mounted for reading only</translation>
    </message>
    <message>
        <source>это работающая программа: %1</source>
        <translation>it is a running program: %1</translation>
    </message>
    <message>
        <source>на диске недостаточно места</source>
        <translation>there is not enough room on the disk</translation>
    </message>
    <message>
        <source>на диске нет места для новых файлов</source>
        <translation>there is no room for new files on the disk</translation>
    </message>
    <message>
        <source>исчерпана квота на диске</source>
        <translation>the disk quota is used up</translation>
    </message>
    <message>
        <source>его заблокировал %1</source>
        <translation>it is locked by %1</translation>
    </message>
    <message>
        <source>его использует %1</source>
        <translation>it is in use by %1</translation>
    </message>
    <message>
        <source>нет прав на создание файлов в папке &apos;%1&apos;</source>
        <translation>you may not create files in the folder &apos;%1&apos;</translation>
    </message>
    <message>
        <source>папка &apos;%1&apos; отмечена как неизменяемая</source>
        <translation>the folder &apos;%1&apos; is marked as immutable</translation>
    </message>
    <message>
        <source>%1 и ещё %2</source>
        <translation>%1 and %2 more</translation>
    </message>
    <message>
        <source>Не удалось узнать, кто использует &apos;%1&apos;: %2</source>
        <translation>Could not find out who uses &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Процессы других пользователей не видны</source>
        <translation>The processes of other users cannot be seen</translation>
    </message>
    <message>
        <source>Процессов, которые не удалось просмотреть: %1</source>
        <translation>Processes that could not be looked into: %1</translation>
    </message>
    <message>
        <source>процесс %1</source>
        <translation>process %1</translation>
    </message>
    <message>
        <source>Файл &apos;%1&apos; нельзя записать: %2</source>
        <translation>The file &apos;%1&apos; cannot be written: %2</translation>
    </message>
    <message>
        <source>%1 (процесс %2)</source>
        <translation>%1 (process %2)</translation>
    </message>
    <message>
        <source>%1 (процесс %2, пользователь %3)</source>
        <translation>%1 (process %2, user %3)</translation>
    </message>
</context>
<context>
    <name>NamedMutex</name>
    <message>
        <source>не файл мьютекса, открытый для записи всем</source>
        <translation>not a mutex file that everybody may write</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>иное</source>
        <translation>another</translation>
    </message>
    <message>
        <source>Функция %1 возвращает %2</source>
        <translation>Function %1 returns %2</translation>
    </message>
    <message>
        <source>Не удалось инициализировать объект </source>
        <translation>Could not initialize the object </translation>
    </message>
    <message>
        <source>Неизвестный тип данных &apos;%1&apos;, ожидается &apos;%2&apos;</source>
        <translation>Unknown data type &apos;%1&apos;, expected &apos;%2&apos;</translation>
    </message>
    <message>
        <source>Величина %1 содержит недопустимое значение %2</source>
        <translation>%1 holds the invalid value %2</translation>
    </message>
    <message>
        <source>Неподдерживаемая операция. %1</source>
        <translation>Unsupported operation. %1</translation>
    </message>
    <message>
        <source>Не реализовано %1</source>
        <translation>Not implemented: %1</translation>
    </message>
    <message>
        <source>Операция прервана. %1</source>
        <translation>Operation aborted. %1</translation>
    </message>
    <message>
        <source>Индекс %1 вышел за пределы</source>
        <translation>Index %1 is out of range</translation>
    </message>
    <message>
        <source>Не задан аргумент %1</source>
        <translation>Argument %1 is not set</translation>
    </message>
    <message>
        <source>Не удалось создать файл &apos;%0&apos;%1</source>
        <translation>Could not create the file &apos;%0&apos;%1</translation>
    </message>
    <message>
        <source>Не удалось открыть файл &apos;%0&apos;%1</source>
        <translation>Could not open the file &apos;%0&apos;%1</translation>
    </message>
    <message>
        <source>Неизвестная кодировка %1</source>
        <translation>Unknown encoding %1</translation>
    </message>
    <message>
        <source>Строка %1... в кодировке %2 превышает допустимый размер %0</source>
        <translation>The string %1... in the encoding %2 exceeds the permitted size %0</translation>
    </message>
    <message>
        <source>Выкл.</source>
        <translation>Off</translation>
    </message>
    <message>
        <source>Вкл.</source>
        <translation>On</translation>
    </message>
    <message>
        <source>Выкл. для группы</source>
        <translation>Off for the group</translation>
    </message>
    <message>
        <source>Да</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>Нет</source>
        <translation>No</translation>
    </message>
    <message>
        <source>Интерпретатор не содержит %1</source>
        <translation>The interpreter has no %1</translation>
    </message>
    <message>
        <source>Интерпретатор не запущен</source>
        <translation>No interpreter runs</translation>
    </message>
</context>
<context>
    <name>TaskListModel</name>
    <message>
        <source>Неизвестная ошибка</source>
        <translation>Unknown error</translation>
    </message>
    <message>
        <source>В очереди</source>
        <translation>Waiting</translation>
    </message>
    <message>
        <source>Выполняется</source>
        <translation>Running</translation>
    </message>
    <message>
        <source>Приостановлено</source>
        <translation>Paused</translation>
    </message>
    <message>
        <source>Отменяется</source>
        <translation>Canceling</translation>
    </message>
    <message>
        <source>Готово</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>Отменено</source>
        <translation>Canceled</translation>
    </message>
    <message>
        <source>Ошибка</source>
        <translation>Failed</translation>
    </message>
    <message>
        <source>осталось %1 с</source>
        <translation>%1 s left</translation>
    </message>
    <message>
        <source>осталось %1 мин</source>
        <translation>%1 min left</translation>
    </message>
    <message>
        <source>осталось %1 ч %2 мин</source>
        <translation>%1 h %2 min left</translation>
    </message>
</context>
<context>
    <name>TaskResult</name>
    <message>
        <source>Ошибка, о которой никто не спросил: %1</source>
        <translation>An error that nobody asked for: %1</translation>
    </message>
    <message>
        <source>Значение результата уже взято</source>
        <translation>The value of the result was taken before</translation>
    </message>
    <message>
        <source>Наблюдатель задачи прерван: %1</source>
        <translation>An observer of the task was broken off: %1</translation>
    </message>
</context>
<context>
    <name>TemporaryDir</name>
    <message>
        <source>Не удалось открыть папку &apos;%1&apos;: %2</source>
        <translation>Could not open the folder &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>не папка этого пользователя</source>
        <translation>not a folder of this user</translation>
    </message>
    <message>
        <source>в папке нет отметки временной</source>
        <translation>the folder has no mark of a temporary one</translation>
    </message>
    <message>
        <source>Папка &apos;%1&apos; не годится для временных файлов: любой пользователь может подменить в ней чужие файлы</source>
        <translation>The folder &apos;%1&apos; is not fit for temporary files: any user can replace the files of others in it</translation>
    </message>
    <message>
        <source>Не удалось создать временную папку в &apos;%1&apos;: %2</source>
        <translation>Could not create a temporary folder in &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Не удалось удалить &apos;%1&apos;: %2</source>
        <translation>Could not remove &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Не удалось переименовать &apos;%1&apos; в &apos;%2&apos;: %3</source>
        <translation>Could not rename &apos;%1&apos; to &apos;%2&apos;: %3</translation>
    </message>
</context>
<context>
    <name>TreeRemoval</name>
    <message>
        <source>здесь подключена другая папка или другой диск</source>
        <translation>another folder or disk is mounted here</translation>
    </message>
    <message>
        <source>это не имя файла или папки</source>
        <translation>this is not the name of a file or folder</translation>
    </message>
</context>
<context>
    <name>UniqueFile</name>
    <message>
        <source>Не удалось создать &apos;%1&apos;: %2</source>
        <translation>Could not create &apos;%1&apos;: %2</translation>
    </message>
</context>
<context>
    <name>veltor</name>
    <message>
        <source>показать эту справку</source>
        <translation>show this help</translation>
    </message>
    <message>
        <source>не хватает аргументов</source>
        <translation>arguments are missing</translation>
    </message>
    <message>
        <source>после &apos;%1&apos; не хватает аргументов</source>
        <translation>arguments are missing after &apos;%1&apos;</translation>
    </message>
    <message>
        <source>лишний аргумент &apos;%1&apos;</source>
        <translation>unexpected argument &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--%1: ожидается целое число от %2 до %3, а не &apos;%4&apos;</source>
        <translation>--%1 takes a whole number from %2 to %3, not &apos;%4&apos;</translation>
    </message>
    <message>
        <source>--%1: ожидается одно из %2, а не &apos;%3&apos;</source>
        <translation>--%1 takes one of %2, not &apos;%3&apos;</translation>
    </message>
    <message>
        <source>Вызов: </source>
        <translation>Usage: </translation>
    </message>
    <message>
        <source>Ключи:</source>
        <translation>Options:</translation>
    </message>
    <message>
        <source>стандартный вывод: %1</source>
        <translation>standard output: %1</translation>
    </message>
    <message>
        <source>veltor: прервано</source>
        <translation>veltor: interrupted</translation>
    </message>
    <message>
        <source>--ellipsoid: ожидаются большая полуось в метрах и обратное сжатие, например 6378137,298.257223563 (0 — сфера), а не &apos;%1&apos;</source>
        <translation>--ellipsoid takes the semi-major axis in metres and the inverse flattening, as in 6378137,298.257223563 (0: a sphere), not &apos;%1&apos;</translation>
    </message>
    <message>
        <source>нет такого ключа: &apos;%1&apos;</source>
        <translation>there is no option &apos;%1&apos;</translation>
    </message>
    <message>
        <source>нет таких ключей: %1</source>
        <translation>there are no options %1</translation>
    </message>
    <message>
        <source>не задано значение ключа &apos;%1&apos;</source>
        <translation>a value is missing after &apos;%1&apos;</translation>
    </message>
    <message>
        <source>у ключа &apos;%1&apos; не бывает значения</source>
        <translation>&apos;%1&apos; takes no value</translation>
    </message>
    <message>
        <source>нет прав доступа</source>
        <translation>permission denied</translation>
    </message>
    <message>
        <source>открыто слишком много файлов</source>
        <translation>too many open files</translation>
    </message>
    <message>
        <source>нет такого файла или папки</source>
        <translation>no such file or directory</translation>
    </message>
    <message>
        <source>на устройстве не осталось места</source>
        <translation>no space left on device</translation>
    </message>
    <message>
        <source>это папка</source>
        <translation>is a directory</translation>
    </message>
    <message>
        <source>закрыт</source>
        <translation>is closed</translation>
    </message>
    <message>
        <source>файл слишком велик</source>
        <translation>file too large</translation>
    </message>
    <message>
        <source>ошибка ввода-вывода</source>
        <translation>input/output error</translation>
    </message>
    <message>
        <source>действие не разрешено</source>
        <translation>operation not permitted</translation>
    </message>
    <message>
        <source>канал никто не читает</source>
        <translation>nobody reads the pipe</translation>
    </message>
    <message>
        <source>ошибка системы %1</source>
        <translation>system error %1</translation>
    </message>
    <message>
        <source>расстояния между двумя точками по всем формулам</source>
        <translation>distances between positions by every formula</translation>
    </message>
    <message>
        <source>показать журнал отката, откатить, исправить, убрать</source>
        <translation>show, roll back, repair or discard a rollback journal</translation>
    </message>
    <message>
        <source>площади, периметры и длины объектов карты GeoJSON</source>
        <translation>areas, perimeters and lengths of a GeoJSON map</translation>
    </message>
    <message>
        <source>Вызов: veltor КОМАНДА [АРГУМЕНТЫ...]</source>
        <translation>Usage: veltor COMMAND [ARGUMENTS...]</translation>
    </message>
    <message>
        <source>Команды:</source>
        <translation>Commands:</translation>
    </message>
    <message>
        <source>Подробно: veltor help КОМАНДА или veltor КОМАНДА --help; версия: veltor --version</source>
        <translation>More: veltor help COMMAND or veltor COMMAND --help; the version: veltor --version</translation>
    </message>
    <message>
        <source>Код завершения: 0 — сделано, 1 — отказ или ошибка, 2 — неверная командная строка, 130 — прервано</source>
        <translation>Exit status: 0 done, 1 refused or failed, 2 the command line does not fit, 130 interrupted</translation>
    </message>
    <message>
        <source>нет такой команды: &apos;%1&apos;</source>
        <translation>there is no command &apos;%1&apos;</translation>
    </message>
    <message>
        <source>не названа команда</source>
        <translation>which command?</translation>
    </message>
    <message>
        <source>смотрите %1 --help</source>
        <translation>see %1 --help</translation>
    </message>
    <message>
        <source>на запись</source>
        <translation>for writing</translation>
    </message>
    <message>
        <source>на чтение</source>
        <translation>for reading</translation>
    </message>
    <message>
        <source>(ожидает)</source>
        <translation>(waiting)</translation>
    </message>
    <message>
        <source>%1:
</source>
        <translation>%1:
</translation>
    </message>
    <message>
        <source>с %1</source>
        <translation>since %1</translation>
    </message>
    <message>
        <source>процесс %1</source>
        <translation>process %1</translation>
    </message>
    <message>
        <source>неизвестный процесс</source>
        <translation>unknown process</translation>
    </message>
    <message>
        <source>никто не использует</source>
        <translation>nobody uses it</translation>
    </message>
    <message>
        <source>нельзя записать: %1</source>
        <translation>cannot be written: %1</translation>
    </message>
    <message>
        <source>Показывает, какие процессы открыли файл или папку, отобразили в память, выполняют или
находятся в ней, какие блокировки держат, и почему файл нельзя записать. Ничего не
меняет и не открывает. Код завершения: 0 — ничто не мешает записи, 1 — что-то мешает.</source>
        <translation>Shows which processes have a file or folder open, map it, run it or are in it, by which locks,
and why the file cannot be written. Changes and opens nothing. Exit status: 0 nothing stands
against writing, 1 something does.</translation>
    </message>
    <message>
        <source>в виде JSON</source>
        <translation>as JSON</translation>
    </message>
    <message>
        <source>кто использует файлы и почему их нельзя записать</source>
        <translation>who uses files, and why they cannot be written</translation>
    </message>
    <message>
        <source>нет такого файла; создать его ничто не мешает</source>
        <translation>there is no such file; nothing stands against making it</translation>
    </message>
    <message>
        <source>стандартный ввод: %1</source>
        <translation>standard input: %1</translation>
    </message>
    <message>
        <source>Программа</source>
        <translation>Program</translation>
    </message>
    <message>
        <source>Библиотека</source>
        <translation>Library</translation>
    </message>
    <message>
        <source>Время</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>Сигнал</source>
        <translation>Signal</translation>
    </message>
    <message>
        <source>код %1, адрес %2</source>
        <translation>code %1, address %2</translation>
    </message>
    <message>
        <source>Процесс</source>
        <translation>Process</translation>
    </message>
    <message>
        <source>Поток</source>
        <translation>Thread</translation>
    </message>
    <message>
        <source>show ФАЙЛ [--debug-dir КАТАЛОГ]</source>
        <translation>show FILE [--debug-dir DIR]</translation>
    </message>
    <message>
        <source>Показывает файл отчёта о сбое: для каждого кадра стека функцию, исходный файл и строку, если файлы его модуля ещё доступны.</source>
        <translation>Shows a crash file: for each frame of the stack its function, source file and line, where the files of its module are still to be had.</translation>
    </message>
    <message>
        <source>КАТАЛОГ</source>
        <translation>DIR</translation>
    </message>
    <message>
        <source>сначала искать здесь прежние файлы программы и её библиотек или отдельную отладочную информацию, по идентификатору сборки или по имени</source>
        <translation>look here first for the former files of the program and its libraries, or for separate debug information, by build id or by name</translation>
    </message>
    <message>
        <source>неизвестное действие: %1</source>
        <translation>unknown action: %1</translation>
    </message>
    <message>
        <source>veltor: строка %1: ожидаются LON1 LAT1 LON2 LAT2 в градусах: %2</source>
        <translation>veltor: line %1 is not LON1 LAT1 LON2 LAT2 in degrees: %2</translation>
    </message>
    <message>
        <source>veltor: строка %1: рядом с антиподом vincenty и lambert расходятся с ellipsoid больше чем на 100 м (всего таких строк: %2)</source>
        <translation>veltor: line %1: near the antipode, vincenty and lambert are more than 100 m off the ellipsoid (such lines in all: %2)</translation>
    </message>
    <message>
        <source>большая полуось и обратное сжатие (0 — сфера); без ключа WGS 84</source>
        <translation>semi-major axis and inverse flattening (0: a sphere); WGS 84 unless given</translation>
    </message>
    <message>
        <source>СПИСОК</source>
        <translation>LIST</translation>
    </message>
    <message>
        <source>через запятую: cartesian, spherical, ellipsoid, vincenty, lambert, azimuth; без ключа все</source>
        <translation>separated by commas: cartesian, spherical, ellipsoid, vincenty, lambert, azimuth; all unless given</translation>
    </message>
    <message>
        <source>СЛОВО</source>
        <translation>WORD</translation>
    </message>
    <message>
        <source>вид вывода: text (так и без ключа), csv, json</source>
        <translation>the output: text (unless given), csv, json</translation>
    </message>
    <message>
        <source>то же, что --format json: объект в строке, числа со всеми знаками</source>
        <translation>the same as --format json: an object a line, numbers with all their digits</translation>
    </message>
    <message>
        <source>перед строками — строка с названиями столбцов</source>
        <translation>a line with the names of the columns before the others</translation>
    </message>
    <message>
        <source>о неверной строке сообщить и читать дальше; код завершения 1</source>
        <translation>report a line that is none and go on; the exit status is 1</translation>
    </message>
    <message>
        <source>[LON1 LAT1 LON2 LAT2] [КЛЮЧИ...]</source>
        <translation>[LON1 LAT1 LON2 LAT2] [OPTIONS...]</translation>
    </message>
    <message>
        <source>Расстояния между двумя точками в градусах по всем формулам, в метрах (cartesian — в градусах), и азимут в первой точке. Без координат читает со стандартного ввода по паре в строке, через пробелы или запятые, и печатает по строке на пару. Годятся и градусы, минуты и секунды: 37°37&apos;4.8&quot;</source>
        <translation>Distances between two positions in degrees by every formula, in metres (cartesian: in degrees), and the azimuth at the first one. Without coordinates it reads a pair a line from standard input, separated by blanks or commas, and prints a line for each. Degrees, minutes and seconds will do as well: 37°37&apos;4.8&quot;</translation>
    </message>
    <message>
        <source>ожидаются LON1 LAT1 LON2 LAT2 в градусах, а не &apos;%1&apos;</source>
        <translation>LON1 LAT1 LON2 LAT2 in degrees expected, not &apos;%1&apos;</translation>
    </message>
    <message>
        <source>--points бывает только у line</source>
        <translation>only line has --points</translation>
    </message>
    <message>
        <source>veltor: строка %1: ожидаются %2: %3</source>
        <translation>veltor: line %1 is not %2: %3</translation>
    </message>
    <message>
        <source>direct [LON LAT AZIMUTH DISTANCE] [КЛЮЧИ...]</source>
        <translation>direct [LON LAT AZIMUTH DISTANCE] [OPTIONS...]</translation>
    </message>
    <message>
        <source>inverse [LON1 LAT1 LON2 LAT2] [КЛЮЧИ...]</source>
        <translation>inverse [LON1 LAT1 LON2 LAT2] [OPTIONS...]</translation>
    </message>
    <message>
        <source>line [LON1 LAT1 LON2 LAT2] [--points N] [КЛЮЧИ...]</source>
        <translation>line [LON1 LAT1 LON2 LAT2] [--points N] [OPTIONS...]</translation>
    </message>
    <message>
        <source>Кратчайшие линии на эллипсоиде: куда приведут азимут и расстояние (direct), расстояние и азимуты в обеих точках (inverse), N точек вдоль линии вместе с её концами (line). Градусы и метры; годятся и градусы, минуты и секунды: 37°37&apos;4.8&quot;. Без чисел читает их со стандартного ввода, по задаче в строке.</source>
        <translation>Shortest lines on the ellipsoid: where an azimuth and a distance lead (direct), the distance and the azimuths at both positions (inverse), N points along the line, its ends among them (line). Degrees and metres; degrees, minutes and seconds will do as well: 37°37&apos;4.8&quot;. Without numbers it reads them from standard input, a problem a line.</translation>
    </message>
    <message>
        <source>число точек у line; без ключа 11</source>
        <translation>number of points of line; 11 unless given</translation>
    </message>
    <message>
        <source>долготы вдоль линии без скачка на ±180°</source>
        <translation>longitudes that follow the line without the jump at ±180°</translation>
    </message>
    <message>
        <source>ожидается direct, inverse или line, а не &apos;%1&apos;</source>
        <translation>direct, inverse or line expected, not &apos;%1&apos;</translation>
    </message>
    <message>
        <source>ожидаются %1, а не &apos;%2&apos;</source>
        <translation>%1 expected, not &apos;%2&apos;</translation>
    </message>
    <message>
        <source>после карты ожидается конец строки или файла</source>
        <translation>the end of the line or of the file expected</translation>
    </message>
    <message>
        <source>файл пуст</source>
        <translation>the file is empty</translation>
    </message>
    <message>
        <source>точке нужны два числа</source>
        <translation>a position needs two numbers</translation>
    </message>
    <message>
        <source>не та вложенность координат для %1</source>
        <translation>the coordinates are not nested as those of a %1</translation>
    </message>
    <message>
        <source>координаты вложены глубже, чем у MultiPolygon</source>
        <translation>the coordinates are nested deeper than those of a MultiPolygon</translation>
    </message>
    <message>
        <source>число вне точки</source>
        <translation>a number outside a position</translation>
    </message>
    <message>
        <source>число %1 слишком велико</source>
        <translation>the number %1 is too large</translation>
    </message>
    <message>
        <source>широта %1 вне пределов ±90 градусов</source>
        <translation>latitude %1 is not within ±90 degrees</translation>
    </message>
    <message>
        <source>; координаты на плоскости измеряет --mode cartesian</source>
        <translation>; --mode cartesian measures coordinates on a plane</translation>
    </message>
    <message>
        <source>точка %1: %2</source>
        <translation>position %1: %2</translation>
    </message>
    <message>
        <source>ожидается геометрия с type</source>
        <translation>a geometry with a type expected</translation>
    </message>
    <message>
        <source>неизвестный вид геометрии &apos;%1&apos;</source>
        <translation>unknown kind of geometry &apos;%1&apos;</translation>
    </message>
    <message>
        <source>у GeometryCollection нет списка geometries</source>
        <translation>a GeometryCollection without a list of geometries</translation>
    </message>
    <message>
        <source>у %1 нет списка coordinates</source>
        <translation>a %1 without a list of coordinates</translation>
    </message>
    <message>
        <source>восстановлено блоков: %1 из %2</source>
        <translation>blocks restored: %1 of %2</translation>
    </message>
    <message>
        <source>Имена, которые изменит фиксация транзакции:</source>
        <translation>Names that the transaction&apos;s commit would change:</translation>
    </message>
    <message>
        <source>новый файл %1</source>
        <translation>new file %1</translation>
    </message>
    <message>
        <source>удаление %1</source>
        <translation>removal of %1</translation>
    </message>
    <message>
        <source>переименование %1 в %2</source>
        <translation>%1 renamed to %2</translation>
    </message>
    <message>
        <source>Журнал исправен, версия %1, свободных блоков: %2</source>
        <translation>Journal valid, version %1, free blocks: %2</translation>
    </message>
    <message>
        <source>Журнал отвергнут, версия %1, свободных блоков: %2</source>
        <translation>Journal refused, version %1, free blocks: %2</translation>
    </message>
    <message>
        <source>Он не защищает ни одного файла.</source>
        <translation>It protects no files.</translation>
    </message>
    <message>
        <source>Исправление не восстановило бы ничего.</source>
        <translation>A repair would restore nothing.</translation>
    </message>
    <message>
        <source>Откат восстановит:</source>
        <translation>A rollback restores:</translation>
    </message>
    <message>
        <source>Исправление восстановило бы:</source>
        <translation>A repair would restore:</translation>
    </message>
    <message>
        <source>прежний размер</source>
        <translation>old size</translation>
    </message>
    <message>
        <source>блоков</source>
        <translation>blocks</translation>
    </message>
    <message>
        <source>сохранено</source>
        <translation>saved</translation>
    </message>
    <message>
        <source>файл</source>
        <translation>file</translation>
    </message>
    <message>
        <source>%1: такого файла нет</source>
        <translation>%1: there is no such file</translation>
    </message>
    <message>
        <source>Восстановлено файлов: %1</source>
        <translation>Files restored: %1</translation>
    </message>
    <message>
        <source>Имена завершённой транзакции приведены в порядок.</source>
        <translation>The names of a committed transaction were finished.</translation>
    </message>
    <message>
        <source>не восстановлен: %1: %2</source>
        <translation>not restored: %1: %2</translation>
    </message>
    <message>
        <source>восстановлено не всё; повреждённый журнал сохранён как %1</source>
        <translation>not everything was restored; the damaged journal is kept as %1</translation>
    </message>
    <message>
        <source>прервано; журнал сохранён</source>
        <translation>interrupted; the journal is kept</translation>
    </message>
    <message>
        <source>журнал называет файлы вне своей папки; их восстановит только --anywhere</source>
        <translation>the journal names files outside its folder; only --anywhere restores them</translation>
    </message>
    <message>
        <source>Журнал удалён; файлы сохраняют новое содержимое.</source>
        <translation>Journal removed; the files keep their new contents.</translation>
    </message>
    <message>
        <source>show проверяет журнал отката и перечисляет файлы, которые он защищает,
ничего не меняя; от отвергнутого журнала — то, что восстановило бы repair.
rollback возвращает файлам прежнее содержимое и удаляет журнал.
repair восстанавливает всё, что цело в отвергнутом журнале; если это не всё,
журнал сохраняется как JOURNAL.damaged.
discard сохраняет новое содержимое и удаляет журнал.</source>
        <translation>show checks a rollback journal and lists the files that it protects, changing
nothing; of a refused journal, what a repair would restore.
rollback puts every file back to its old contents and removes the journal.
repair restores what is whole of a refused journal; when that is not all, the
journal is kept as JOURNAL.damaged.
discard keeps the new contents and removes the journal.</translation>
    </message>
    <message>
        <source>show: JSON вместо таблицы</source>
        <translation>show: JSON instead of a table</translation>
    </message>
    <message>
        <source>rollback, repair: восстанавливать и файлы вне папки журнала</source>
        <translation>rollback, repair: restore files outside the journal&apos;s folder too</translation>
    </message>
    <message>
        <source>нет такого действия: &apos;%1&apos;</source>
        <translation>there is no action &apos;%1&apos;</translation>
    </message>
    <message>
        <source>действие &apos;%1&apos; не знает этого ключа</source>
        <translation>the action &apos;%1&apos; does not know this option</translation>
    </message>
    <message>
        <source>строка %1, смещение %2: </source>
        <translation>line %1, offset %2: </translation>
    </message>
    <message>
        <source>текст JSON обрывается</source>
        <translation>the JSON text ends too early</translation>
    </message>
    <message>
        <source>ожидается имя члена объекта в кавычках</source>
        <translation>the name of a member expected, between quotes</translation>
    </message>
    <message>
        <source>ожидается двоеточие</source>
        <translation>a colon expected</translation>
    </message>
    <message>
        <source>ожидается запятая или }</source>
        <translation>a comma or } expected</translation>
    </message>
    <message>
        <source>ожидается запятая или ]</source>
        <translation>a comma or ] expected</translation>
    </message>
    <message>
        <source>недопустимый символ или \ в строке</source>
        <translation>an illegal character or \ in a string</translation>
    </message>
    <message>
        <source>половина суррогатной пары в строке</source>
        <translation>half of a surrogate pair in a string</translation>
    </message>
    <message>
        <source>строка не закрыта</source>
        <translation>a string is not closed</translation>
    </message>
    <message>
        <source>строка не в UTF-8</source>
        <translation>a string is not in UTF-8</translation>
    </message>
    <message>
        <source>число слишком велико</source>
        <translation>the number is too large</translation>
    </message>
    <message>
        <source>в числе не хватает цифр</source>
        <translation>digits are missing in a number</translation>
    </message>
    <message>
        <source>недопустимое значение</source>
        <translation>an illegal value</translation>
    </message>
    <message>
        <source>не читается: %1</source>
        <translation>cannot be read: %1</translation>
    </message>
    <message>
        <source>показать отчёт о сбое, оставшийся от программы</source>
        <translation>show the report that a crashed program left</translation>
    </message>
    <message>
        <source>прямая и обратная геодезические задачи, точки вдоль линии</source>
        <translation>direct and inverse geodesic problem, points along a line</translation>
    </message>
    <message>
        <source>ожидается Feature, а не &apos;%1&apos;</source>
        <translation>a Feature expected, not &apos;%1&apos;</translation>
    </message>
    <message>
        <source>неизвестный вид &apos;%1&apos;</source>
        <translation>unknown type &apos;%1&apos;</translation>
    </message>
    <message>
        <source>это не карта: ожидается объект</source>
        <translation>this is no map: an object expected</translation>
    </message>
    <message>
        <source>ожидается объект</source>
        <translation>an object expected</translation>
    </message>
    <message>
        <source>type должен быть строкой</source>
        <translation>the type must be a string</translation>
    </message>
    <message>
        <source>ожидается список</source>
        <translation>a list expected</translation>
    </message>
    <message>
        <source>вложенность больше %1</source>
        <translation>nested deeper than %1</translation>
    </message>
    <message>
        <source>ожидается Feature, а не объект без type</source>
        <translation>a Feature expected, not an object without a type</translation>
    </message>
    <message>
        <source>это не карта: ожидается объект с type</source>
        <translation>this is no map: an object with a type expected</translation>
    </message>
    <message>
        <source>features бывает только у FeatureCollection</source>
        <translation>only a FeatureCollection has features</translation>
    </message>
    <message>
        <source>у FeatureCollection нет списка features</source>
        <translation>a list of features expected in a FeatureCollection</translation>
    </message>
    <message>
        <source>широта чуть дальше полюса взята за полюс</source>
        <translation>a latitude a hair beyond the pole is taken for it</translation>
    </message>
    <message>
        <source>объект %1 (%2): </source>
        <translation>feature %1 (%2): </translation>
    </message>
    <message>
        <source>объект без геометрии</source>
        <translation>a feature without geometry</translation>
    </message>
    <message>
        <source>%1 не измеряется</source>
        <translation>%1 is not measured</translation>
    </message>
    <message>
        <source>прочитано %1 МБ</source>
        <translation>%1 MB read</translation>
    </message>
    <message>
        <source>[%1] %2 из %3 МБ</source>
        <translation>[%1] %2 of %3 MB</translation>
    </message>
    <message>
        <source>ФАЙЛ.geojson [КЛЮЧИ...]</source>
        <translation>FILE.geojson [OPTIONS...]</translation>
    </message>
    <message>
        <source>Площади и периметры многоугольников и длины линий карты GeoJSON, и их суммы. Файл любой величины читается потоком; - — стандартный ввод; годятся и объекты по одному в строке, и последовательность RFC 8142.</source>
        <translation>Areas and perimeters of the polygons and lengths of the lines of a GeoJSON map, and the totals. A file of any size is read as a stream; - is standard input; one feature a line and sequences of RFC 8142 will do as well.</translation>
    </message>
    <message>
        <source>Метры и квадратные метры, если не задано иное; с --mode cartesian единица файла.</source>
        <translation>Metres and square metres unless told otherwise; with --mode cartesian the unit of the file.</translation>
    </message>
    <message>
        <source>стандартный ввод</source>
        <translation>standard input</translation>
    </message>
    <message>
        <source>--%1 не имеет смысла на плоскости</source>
        <translation>--%1 has no meaning on the plane</translation>
    </message>
    <message>
        <source>поверхность: cartesian, plane; spherical, sphere; ellipsoidal, ellipsoid, ellipse; auto, default и &apos;&apos; — эллипсоид</source>
        <translation>the surface: cartesian, plane; spherical, sphere; ellipsoidal, ellipsoid, ellipse; auto, default and &apos;&apos; are the ellipsoid</translation>
    </message>
    <message>
        <source>что соединяет точки: geodesic — кратчайшие линии (так и без ключа), straight — прямые по долготе и широте, как в RFC 7946</source>
        <translation>what joins positions: geodesic, the shortest lines (unless given); straight, lines straight in longitude and latitude, as in RFC 7946</translation>
    </message>
    <message>
        <source>большая полуось и обратное сжатие (0 — сфера); без ключа WGS 84, для сферы радиус 6370997</source>
        <translation>semi-major axis and inverse flattening (0: a sphere); WGS 84 unless given, for a sphere the radius 6370997</translation>
    </message>
    <message>
        <source>СВОЙСТВО</source>
        <translation>PROPERTY</translation>
    </message>
    <message>
        <source>свойство с именем объекта; без ключа name или NAME; иначе id или номер</source>
        <translation>the property with a feature&apos;s name; name or NAME unless given; else the id or the number</translation>
    </message>
    <message>
        <source>N объектов наибольшей площади, затем длины, в этом порядке</source>
        <translation>the N features of the largest area, then length, in this order</translation>
    </message>
    <message>
        <source>порядок: name, area, perimeter, length; числа по убыванию</source>
        <translation>the order: name, area, perimeter, length; numbers from the largest</translation>
    </message>
    <message>
        <source>вид вывода: table (так и без ключа), csv, json, geojson</source>
        <translation>the output: table (unless given), csv, json, geojson</translation>
    </message>
    <message>
        <source>единица: m, km, ha (длины в m), mi, nmi, ft; без ключа m, в таблице больших объектов km</source>
        <translation>the unit: m, km, ha (lengths in m), mi, nmi, ft; m unless given, km in a table of large features</translation>
    </message>
    <message>
        <source>знаков после точки; без ключа в таблице 3, иначе все</source>
        <translation>digits behind the point; unless given 3 in a table, else all</translation>
    </message>
    <message>
        <source>то же, что --format json</source>
        <translation>the same as --format json</translation>
    </message>
    <message>
        <source>вид текста JSON: compact, squeeze, indented (так и без ключа), unindented, brackets-indented, comma-first, delimited; включает --json</source>
        <translation>layout of the JSON text: compact, squeeze, indented (unless given), unindented, brackets-indented, comma-first, delimited; implies --json</translation>
    </message>
    <message>
        <source>концы строк JSON и CSV: lf, crlf, cr; без ключа lf, в CSV crlf; включает --json, если нет --format</source>
        <translation>line ends of JSON and CSV: lf, crlf, cr; unless given lf, in CSV crlf; implies --json without --format</translation>
    </message>
    <message>
        <source>ФАЙЛ</source>
        <translation>FILE</translation>
    </message>
    <message>
        <source>куда записать, когда какой поток что делал: события для просмотра в браузере</source>
        <translation>where to write what each thread did when: events for a browser&apos;s viewer</translation>
    </message>
    <message>
        <source>--json и --layout не сочетаются с --format %1</source>
        <translation>--json and --layout do not go with --format %1</translation>
    </message>
    <message>
        <source>имя</source>
        <translation>name</translation>
    </message>
    <message>
        <source>площадь</source>
        <translation>area</translation>
    </message>
    <message>
        <source>периметр</source>
        <translation>perimeter</translation>
    </message>
    <message>
        <source>длина</source>
        <translation>length</translation>
    </message>
    <message>
        <source>всего объектов: %1</source>
        <translation>total of %1</translation>
    </message>
    <message>
        <source>объект %1 (%2)</source>
        <translation>feature %1 (%2)</translation>
    </message>
    <message>
        <source> (всего таких объектов: %1)</source>
        <translation> (such features in all: %1)</translation>
    </message>
    <message>
        <source>ненадёжно: рядом с антиподом</source>
        <translation>unreliable: near the antipode</translation>
    </message>
    <message>
        <source>дыры больше многоугольника; его площадь взята за 0</source>
        <translation>the holes are larger than the polygon, whose area is taken for 0</translation>
    </message>
    <message>
        <source>Измерение: %1</source>
        <translation>Measuring %1</translation>
    </message>
    <message>
        <source>ФАЙЛ.html</source>
        <translation>FILE.html</translation>
    </message>
    <message>
        <source>куда записать страницу о том, что не измерено и почему</source>
        <translation>where to write a page about what was not measured and why</translation>
    </message>
    <message>
        <source>%1: этот файл читается</source>
        <translation>%1: this file is being read</translation>
    </message>
    <message>
        <source>никто из тех, кого видно, не использует</source>
        <translation>nobody that can be seen uses it</translation>
    </message>
    <message>
        <source>rollback, repair: журнал записан с расчётом на потерю питания</source>
        <translation>rollback, repair: the journal was written to survive a loss of power</translation>
    </message>
</context>
<context>
    <name>veltor::concurrent::ProgressHandler</name>
    <message>
        <source>Операция была прервана</source>
        <translation>The operation was cancelled</translation>
    </message>
</context>
<context>
    <name>veltor::concurrent::TaskThreadPool</name>
    <message>
        <source>Задача с родительским объектом не может перейти в другой поток</source>
        <translation>A task with a parent object cannot move to another thread</translation>
    </message>
    <message>
        <source>Задача не принадлежит ни одному потоку</source>
        <translation>The task belongs to no thread</translation>
    </message>
    <message>
        <source>Задача уже передана на выполнение</source>
        <translation>The task was already handed over</translation>
    </message>
</context>
<context>
    <name>veltor::utils::ItemModelExport</name>
    <message>
        <source>в таблице нет столбца %1</source>
        <translation>the table has no column %1</translation>
    </message>
    <message>
        <source>Уровень</source>
        <translation>Level</translation>
    </message>
    <message>
        <source>разделитель и кавычка CSV не годятся вместе</source>
        <translation>the delimiter and the quote of the CSV do not go together</translation>
    </message>
    <message>
        <source>недопустимый конец строки CSV</source>
        <translation>the line end of the CSV is not a valid one</translation>
    </message>
    <message>
        <source>Таблица</source>
        <translation>Table</translation>
    </message>
    <message>
        <source>таблица изменилась во время записи</source>
        <translation>the table changed while it was being written</translation>
    </message>
    <message>
        <source>источник таблицы не передал всех строк</source>
        <translation>the source of the table did not deliver all rows</translation>
    </message>
    <message>
        <source>&apos;%1&apos; не открыт для записи</source>
        <translation>&apos;%1&apos; is not open for writing</translation>
    </message>
    <message>
        <source>Не удалось записать &apos;%1&apos;: %2</source>
        <translation>Could not write &apos;%1&apos;: %2</translation>
    </message>
</context>
<context>
    <name>veltor::utils::SecuredFile</name>
    <message>
        <source>Ошибка перехода к смещению %0 (размер файла отката %1, %2)</source>
        <translation>Could not seek to offset %0 (size of the rollback journal %1, %2)</translation>
    </message>
    <message>
        <source>файл открыт</source>
        <translation>file open</translation>
    </message>
    <message>
        <source>файл закрыт</source>
        <translation>file closed</translation>
    </message>
    <message>
        <source>Ошибка чтения данных отката по смещению %0 (должно быть прочитано %1, а прочитано %2)</source>
        <translation>Could not read rollback data at offset %0 (bytes expected: %1, read: %2)</translation>
    </message>
    <message>
        <source>Указана неизвестная версия файла отката (%0)</source>
        <translation>Unknown version of the rollback journal (%0)</translation>
    </message>
    <message>
        <source>Задано смещение первого файла в цепочке (%0), но не задано смещение последнего файла</source>
        <translation>The offset of the first file in the chain is set (%0), but that of the last file is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего файла в цепочке (%0), но не задано смещение первого файла</source>
        <translation>The offset of the last file in the chain is set (%0), but that of the first file is not</translation>
    </message>
    <message>
        <source>Задано смещение первого свободного блока в цепочке (%0), но не задано смещение последнего свободного блока</source>
        <translation>The offset of the first free block in the chain is set (%0), but that of the last free block is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего свободного блока в цепочке (%0), но не задано смещение первого свободного блока</source>
        <translation>The offset of the last free block in the chain is set (%0), but that of the first free block is not</translation>
    </message>
    <message>
        <source>Некорректно указано смещение первого файла в цепочке (%0)</source>
        <translation>Invalid offset of the first file in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение последнего файла в цепочке (%0)</source>
        <translation>Invalid offset of the last file in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение первого свободного блока в цепочке (%0)</source>
        <translation>Invalid offset of the first free block in the chain (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение последнего свободного блока в цепочке (%0)</source>
        <translation>Invalid offset of the last free block in the chain (%0)</translation>
    </message>
    <message>
        <source>Задано смещение первого изменения в цепочке (%0) файла размером %1, но не задано смещение последнего изменения</source>
        <translation>The offset of the first change in the chain is set (%0) for a file of size %1, but that of the last change is not</translation>
    </message>
    <message>
        <source>Задано смещение последнего изменения в цепочке (%0) файла размером %1, но не задано смещение первого изменения</source>
        <translation>The offset of the last change in the chain is set (%0) for a file of size %1, but that of the first change is not</translation>
    </message>
    <message>
        <source>Некорректное смещение первого изменения в цепочке (%0) файла размером %1</source>
        <translation>Invalid offset of the first change in the chain (%0) of a file of size %1</translation>
    </message>
    <message>
        <source>Некорректное смещение последнего изменения в цепочке (%0) файла размером %1</source>
        <translation>Invalid offset of the last change in the chain (%0) of a file of size %1</translation>
    </message>
    <message>
        <source>Некорректное смещение очередного (после файла размером %1) файла в цепочке (%0)</source>
        <translation>Invalid offset of the next file in the chain (%0), after a file of size %1</translation>
    </message>
    <message>
        <source>Указанное в заголовке файла смещение последнего блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the last block in the file&apos;s header (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Ошибка позиционирования в файле по смещению %0 относительно %1</source>
        <translation>Could not position in the file at offset %0 relative to %1</translation>
    </message>
    <message>
        <source>Ошибка чтения имени файла по смещению %0 (прочитано %1 вместо %2)</source>
        <translation>Could not read the file name at offset %0 (bytes read: %1 instead of %2)</translation>
    </message>
    <message>
        <source>Имя файла содержит запрещенные символы</source>
        <translation>The file name contains forbidden characters</translation>
    </message>
    <message>
        <source>Ошибка открытия файла &apos;%0&apos;</source>
        <translation>Could not open the file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Смещение последнего блока цепочки (%0) не совпадает с указанным в заголовке файла (%1)</source>
        <translation>The offset of the last block in the chain (%0) differs from the one in the file&apos;s header (%1)</translation>
    </message>
    <message>
        <source>Блок данных длиной %0 со смещением %1 выходит за границы файла (%2)</source>
        <translation>A data block of length %0 at offset %1 exceeds the bounds of the file (%2)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение следующего блока изменений (%0)</source>
        <translation>Invalid offset of the next change block (%0)</translation>
    </message>
    <message>
        <source>Некорректно указано смещение предыдущего блока изменений (%0)</source>
        <translation>Invalid offset of the previous change block (%0)</translation>
    </message>
    <message>
        <source>Указанное смещение предыдущего блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the previous block (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Не совпадает контрольная сумма данных отката по смещению %0</source>
        <translation>Checksum mismatch in the rollback data at offset %0</translation>
    </message>
    <message>
        <source>Пустой свободный блок</source>
        <translation>Empty free block</translation>
    </message>
    <message>
        <source>Некорректное смещение следующего свободного блока (%0)</source>
        <translation>Invalid offset of the next free block (%0)</translation>
    </message>
    <message>
        <source>Некорректное смещение предыдущего свободного блока (%0)</source>
        <translation>Invalid offset of the previous free block (%0)</translation>
    </message>
    <message>
        <source>Некорректное смещение свободного блока в исходном файле (%0)</source>
        <translation>Invalid offset of the free block in the original file (%0)</translation>
    </message>
    <message>
        <source>Указанное смещение предыдущего свободного блока (%0) не соответствует полученному при прямом проходе по цепочке (%1)</source>
        <translation>The offset of the previous free block (%0) differs from the one found by walking the chain forwards (%1)</translation>
    </message>
    <message>
        <source>Устройство файла отката не открыто или не допускает произвольный доступ</source>
        <translation>The device of the rollback journal is not open or does not allow random access</translation>
    </message>
    <message>
        <source>Файл отката не допускает новых изменений: он восстановлен, не прошел проверку или не содержит контрольных сумм</source>
        <translation>The rollback journal takes no further changes: it was repaired, failed validation or has no checksums</translation>
    </message>
    <message>
        <source>Откат невозможен: файл отката не прошел проверку</source>
        <translation>Rollback is impossible: the rollback journal failed validation</translation>
    </message>
    <message>
        <source>Ошибка записи данных отката по смещению %0 (должно быть записано %1, а записано %2)</source>
        <translation>Could not write rollback data at offset %0 (bytes expected: %1, written: %2)</translation>
    </message>
    <message>
        <source>Ошибка удаления файла отката &apos;%0&apos;</source>
        <translation>Could not remove the rollback journal &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Имя файла слишком длинное для файла отката: &apos;%0&apos;</source>
        <translation>The file name is too long for the rollback journal: &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; не может защищать сам себя</source>
        <translation>The rollback journal &apos;%0&apos; cannot protect itself</translation>
    </message>
    <message>
        <source>Файл &apos;%0&apos; закрыт</source>
        <translation>The file &apos;%0&apos; is closed</translation>
    </message>
    <message>
        <source>Ошибка чтения файла по смещению %0 (должно быть прочитано %1, а прочитано %2): &apos;%3&apos;</source>
        <translation>Could not read the file at offset %0 (bytes expected: %1, read: %2): &apos;%3&apos;</translation>
    </message>
    <message>
        <source>Ошибка записи файла по смещению %0: &apos;%1&apos;</source>
        <translation>Could not write the file at offset %0: &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Ошибка изменения размера файла до %0: &apos;%1&apos;</source>
        <translation>Could not change the size of the file to %0: &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Ошибка сброса данных на диск: &apos;%0&apos;</source>
        <translation>Could not flush the data to disk: &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Невозможно узнать размер файла отката</source>
        <translation>Cannot tell the size of the rollback file</translation>
    </message>
    <message>
        <source>Ошибка изменения размера файла отката до %0</source>
        <translation>Error setting the size of the rollback file to %0</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; остался в силе: его не удалось ни удалить, ни очистить</source>
        <translation>The rollback file &apos;%0&apos; stays in force: it could be neither deleted nor emptied</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; занят другой программой (процесс %1)</source>
        <translation>The rollback file &apos;%0&apos; is in use by another program (process %1)</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; занят другой программой</source>
        <translation>The rollback file &apos;%0&apos; is in use by another program</translation>
    </message>
    <message>
        <source>Невозможно занять файл отката &apos;%0&apos;</source>
        <translation>Cannot lock the rollback file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; хранит незавершенные изменения</source>
        <translation>The rollback file &apos;%0&apos; holds unfinished changes</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; принадлежит другому пользователю или открыт ему для записи</source>
        <translation>The rollback file &apos;%0&apos; belongs to another user, or another user may write it</translation>
    </message>
    <message>
        <source>Файл &apos;%0&apos; не является файлом отката</source>
        <translation>The file &apos;%0&apos; is not a rollback file</translation>
    </message>
    <message>
        <source>Файл отката доступен тем, кому недоступен файл &apos;%0&apos;</source>
        <translation>The rollback file can be read by those who may not read the file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Файл &apos;%0&apos; заменен другим</source>
        <translation>The file &apos;%0&apos; was replaced by another one</translation>
    </message>
    <message>
        <source>Невозможно узнать размер файла &apos;%0&apos;</source>
        <translation>Cannot tell the size of the file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Прежняя длина файла (%0) не подтверждена сохраненными данными: &apos;%1&apos;</source>
        <translation>The former length of the file (%0) is not backed by saved data: &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Файл открыт под защитой уже завершенного отката</source>
        <translation>The file was opened under the protection of a transaction that has ended</translation>
    </message>
    <message>
        <source>Точка сохранения больше не действует</source>
        <translation>The savepoint is no longer valid</translation>
    </message>
    <message>
        <source>Это не обычный файл</source>
        <translation>This is not a regular file</translation>
    </message>
    <message>
        <source>Имя является символической ссылкой или ведет через нее</source>
        <translation>The name is a symbolic link or leads through one</translation>
    </message>
    <message>
        <source>Имя ведет за пределы каталога файла отката</source>
        <translation>The name leads out of the rollback file&apos;s folder</translation>
    </message>
    <message>
        <source>Файл принадлежит служебной файловой системе</source>
        <translation>The file belongs to a system interface file system</translation>
    </message>
    <message>
        <source>Файл не разрешен правилом имен</source>
        <translation>The name rule does not accept the file</translation>
    </message>
    <message>
        <source>Файл отката &apos;%0&apos; занят другой программой: %1</source>
        <translation>The rollback file &apos;%0&apos; is in use by another program: %1</translation>
    </message>
    <message>
        <source>Система не подтвердила запись файла &apos;%0&apos; на диск</source>
        <translation>The system has not confirmed that the file &apos;%0&apos; is on the disk</translation>
    </message>
    <message>
        <source>Система не подтвердила запись имен в папке &apos;%0&apos; на диск</source>
        <translation>The system has not confirmed that the names in the folder &apos;%0&apos; are on the disk</translation>
    </message>
    <message>
        <source>Система не подтвердила запись файла отката на диск</source>
        <translation>The system has not confirmed that the rollback file is on the disk</translation>
    </message>
</context>
<context>
    <name>veltor::utils::Transaction</name>
    <message>
        <source>Транзакция не начата или уже завершена</source>
        <translation>The transaction has not begun or has ended</translation>
    </message>
    <message>
        <source>Откат прерван, файл отката &apos;%0&apos; сохранён</source>
        <translation>The rollback was cancelled; the rollback file &apos;%0&apos; is kept</translation>
    </message>
    <message>
        <source>Из файла отката &apos;%0&apos; восстановить можно не всё, файлы не изменены: %1</source>
        <translation>The rollback file &apos;%0&apos; cannot restore everything; no file was changed: %1</translation>
    </message>
    <message>
        <source>Не восстановлено файлов: %0, файл отката &apos;%1&apos; сохранён: %2</source>
        <translation>Files not restored: %0; the rollback file &apos;%1&apos; is kept: %2</translation>
    </message>
    <message>
        <source>часть сохранённых данных потеряна, восстановлено не всё</source>
        <translation>a part of the saved bytes is lost; not all was restored</translation>
    </message>
    <message>
        <source>файл не удалось открыть</source>
        <translation>the file could not be opened</translation>
    </message>
    <message>
        <source>Точка сохранения не принадлежит транзакции или уже недействительна</source>
        <translation>The savepoint does not belong to the transaction or is no longer valid</translation>
    </message>
    <message>
        <source>&apos;%0&apos; не может быть именем файла в папке файла отката</source>
        <translation>&apos;%0&apos; cannot be the name of a file in the rollback file&apos;s folder</translation>
    </message>
    <message>
        <source>Имя &apos;%0&apos; занято самой транзакцией</source>
        <translation>The name &apos;%0&apos; is used by the transaction itself</translation>
    </message>
    <message>
        <source>Имя &apos;%0&apos; уже занято</source>
        <translation>The name &apos;%0&apos; is already taken</translation>
    </message>
    <message>
        <source>Файла &apos;%0&apos; нет</source>
        <translation>There is no file &apos;%0&apos;</translation>
    </message>
    <message>
        <source>&apos;%0&apos; не является обычным файлом</source>
        <translation>&apos;%0&apos; is not a regular file</translation>
    </message>
    <message>
        <source>&apos;%0&apos; и &apos;%1&apos; — один и тот же файл</source>
        <translation>&apos;%0&apos; and &apos;%1&apos; are one and the same file</translation>
    </message>
    <message>
        <source>Нет доступа к &apos;%0&apos;: %1</source>
        <translation>No access to &apos;%0&apos;: %1</translation>
    </message>
    <message>
        <source>Ошибка создания &apos;%0&apos;: %1</source>
        <translation>Could not create &apos;%0&apos;: %1</translation>
    </message>
    <message>
        <source>Ошибка переименования &apos;%0&apos; в &apos;%1&apos;: %2</source>
        <translation>Could not rename &apos;%0&apos; to &apos;%1&apos;: %2</translation>
    </message>
    <message>
        <source>Ошибка удаления &apos;%0&apos;: %1</source>
        <translation>Could not remove &apos;%0&apos;: %1</translation>
    </message>
    <message>
        <source>Нет права создавать и удалять файлы рядом с &apos;%0&apos;</source>
        <translation>No right to create and remove files beside &apos;%0&apos;</translation>
    </message>
    <message>
        <source>Слишком много изменений имён в одной транзакции</source>
        <translation>Too many changes of names in one transaction</translation>
    </message>
    <message>
        <source>Список имён транзакции &apos;%0&apos; повреждён, имена не изменены</source>
        <translation>The transaction&apos;s list of names &apos;%0&apos; is damaged; no name was changed</translation>
    </message>
    <message>
        <source>Ошибка чтения или записи списка имён транзакции &apos;%0&apos;: %1</source>
        <translation>Could not read or write the transaction&apos;s list of names &apos;%0&apos;: %1</translation>
    </message>
    <message>
        <source>Папка транзакции &apos;%0&apos; принадлежит другому пользователю</source>
        <translation>The transaction&apos;s folder &apos;%0&apos; belongs to another user, or others may change it</translation>
    </message>
    <message>
        <source>&apos;%0&apos; не является папкой транзакции</source>
        <translation>&apos;%0&apos; is not a transaction&apos;s folder</translation>
    </message>
    <message>
        <source>Система не подтвердила запись &apos;%0&apos; на диск: %1</source>
        <translation>The system has not confirmed that &apos;%0&apos; is on the disk: %1</translation>
    </message>
</context>
</TS>
