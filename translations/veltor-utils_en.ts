<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="ru">
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
        <source>стандартный ввод: %1</source>
        <translation>standard input: %1</translation>
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
</context>
<context>
    <name>veltor::concurrent::ProgressHandler</name>
    <message>
        <source>Операция была прервана</source>
        <translation>The operation was cancelled</translation>
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
</context>
</TS>
