"""Words that documents hold, with accents as they are printed: labels in many languages, names, places, sentences."""

# One thing a row, its names in several languages; a pair of labels is of one row. After a last bar the row goes on.
LABELS = [row.split("|") for row in """
Surname|Nom|Apellidos|Name|Nachname|Apelido|Cognome|Naam|Achternaam|Soyadı|Nazwisko|Nama keluarga|Efternamn|Příjmení|
Családi név|Nume|Sukunimi|Perekonnanimi|Uzvārds|Pavardė|Prezime|Priimek|Priezvisko|Etternavn|Họ
Given names|Given name|Given name(s)|Prénoms|Prénom(s)|Nombre|Nombres|Vornamen|Vorname|Nomes próprios|Nome|Nomi|
Voornamen|Adı|Imię|Imiona|Nama depan|Förnamn|Jméno|Utónév|Prenume|Etunimet|Eesnimi|Vārds|Vardas|Ime|Fornavne|Tên
Nationality|Nationalité|Nacionalidad|Staatsangehörigkeit|Nacionalidade|Cittadinanza|Nationaliteit|Uyruğu|Obywatelstwo|
Kewarganegaraan|Nationalitet|Státní občanství|Állampolgárság|Cetăţenie|Kansalaisuus|Kodakondsus|Pilsonība|Pilietybė|
Državljanstvo|Quốc tịch
Date of birth|Birth date|Date de naissance|Fecha de nacimiento|Geburtsdatum|Geburtstag|Data de nascimento|
Data di nascita|Geboortedatum|Doğum tarihi|Data urodzenia|Tanggal lahir|Födelsedatum|Datum narození|Születési idő|
Data naşterii|Syntymäaika|Sünniaeg|Dzimšanas datums|Gimimo data|Datum rođenja|Fødselsdato|Ngày sinh
Place of birth|Birthplace|Lieu de naissance|Lugar de nacimiento|Geburtsort|Local de nascimento|Luogo di nascita|
Geboorteplaats|Doğum yeri|Miejsce urodzenia|Tempat lahir|Födelseort|Místo narození|Születési hely|Locul naşterii|
Syntymäpaikka|Sünnikoht|Dzimšanas vieta|Gimimo vieta|Mjesto rođenja|Fødested|Nơi sinh
Sex|Sexe|Sexo|Geschlecht|Sesso|Geslacht|Cinsiyeti|Płeć|Jenis kelamin|Kön|Pohlaví|Nem|Sukupuoli|Sugu|Dzimums|Lytis|
Spol|Kjønn|Giới tính
Date of issue|Issue date|Issued on|Date de délivrance|Fecha de expedición|Fecha de emisión|Ausstellungsdatum|
Tag der Ausstellung|Data de emissão|Data di rilascio|Datum van afgifte|Düzenleme tarihi|Data wydania|
Tanggal pengeluaran|Utfärdat den|Datum vydání|Kiállítás dátuma|Data emiterii|Myönnetty|Väljaandmise kuupäev|
Izdošanas datums|Išdavimo data|Datum izdavanja|Udstedelsesdato|Ngày cấp
Date of expiry|Expiry date|Date of expiration|Valid until|Expires on|Date d'expiration|Fecha de caducidad|
Fecha de vencimiento|Gültig bis|Data de validade|Válido até|Data di scadenza|Geldig tot|Son geçerlilik tarihi|
Data ważności|Berlaku hingga|Giltigt till|Platnost do|Lejárat dátuma|Data expirării|Viimeinen voimassaolopäivä|
Kehtiv kuni|Derīga līdz|Galioja iki|Vrijedi do|Udløbsdato|Có giá trị đến
Authority|Issuing authority|Issued by|Autorité|Autorité de délivrance|Autoridad|Autoridad expedidora|Behörde|
Ausstellende Behörde|Autoridade|Autorità|Instantie|Afgegeven door|Veren makam|Organ wydający|Kantor yang mengeluarkan|
Myndighet|Orgán|Kiállító hatóság|Autoritatea|Viranomainen|Väljaandja|Izdevējs|Įstaiga|Tijelo|Cơ quan cấp
Passport No.|Passport Number|Passport no|Passeport N°|N° du passeport|Pasaporte N°|Pasaporte No.|Número de pasaporte|
Reisepass-Nr.|Passnummer|Passaporte N.º|Passaporto n.|Paspoortnummer|Pasaport No|Nr paszportu|No. paspor|Passnr.|
Číslo pasu|Útlevélszám|Nr. paşaport|Passin numero|Passi number|Pases Nr.|Paso Nr.|Broj putovnice|Pasnr.|Số hộ chiếu
Document No.|Document number|Numéro du document|Número de documento|Dokumentennummer|Documento n.|Documentnummer|
Belge No|Numer dokumentu|Nomor dokumen|Dokumentnummer|Číslo dokladu|Asiakirjan numero
Type|Type of document|Tipo|Typ|Art|Türü|Jenis|Tyyppi|Tüüp|Veids|Rūšis|Vrsta|Loại
Code|Country code|Code of issuing state|Code du pays|Código del país|Code de l'État émetteur|Código do país|
Codice paese|Landcode|Ülke kodu|Kod państwa|Kode negara|Landskod|Kód státu|Az állam kódja|Codul ţării|Maakood|
Valsts kods|Valstybės kodas|Kod države|Mã số
Passport|Passeport|Pasaporte|Reisepass|Passaporte|Passaporto|Paspoort|Pasaport|Paszport|Paspor|Pass|Cestovní pas|
Útlevél|Paşaport|Passi|Pase|Pasas|Putovnica|Potni list|Pas|Vegabréf|Hộ chiếu
Identity card|Carte d'identité|Documento de identidad|Personalausweis|Bilhete de identidade|Carta d'identità|
Identiteitskaart|Kimlik kartı|Dowód osobisty|Kartu tanda penduduk|Identitetskort|Občanský průkaz|
Személyazonosító igazolvány|Carte de identitate|Henkilökortti|Asmens tapatybės kortelė
Residence permit|Titre de séjour|Permiso de residencia|Aufenthaltstitel|Título de residência|Permesso di soggiorno|
Verblijfstitel|İkamet izni|Karta pobytu|Uppehållstillstånd|Povolení k pobytu|Tartózkodási engedély
Driving licence|Driver's license|Permis de conduire|Permiso de conducción|Führerschein|Carta de condução|
Patente di guida|Rijbewijs|Sürücü belgesi|Prawo jazdy|Surat izin mengemudi|Körkort|Řidičský průkaz|Vezetői engedély|
Permis de conducere
Personal No.|Personal number|Identity No.|National ID No.|N° personnel|Número personal|Persönliche Nummer|
Número pessoal|Codice fiscale|Persoonsnummer|T.C. Kimlik No|PESEL|NIK|Personnummer|Rodné číslo|Személyi azonosító|
Cod numeric personal|Henkilötunnus|Isikukood|Personas kods|Asmens kodas|OIB|CPF|RUN|CURP|Clave de elector
Height|Taille|Estatura|Größe|Altura|Statura|Lengte|Boyu|Wzrost|Tinggi|Längd|Výška|Magasság|Înălţime|Pituus|Pikkus|
Augums|Ūgis|Visina|Chiều cao
Colour of eyes|Eye colour|Eyes|Couleur des yeux|Color de ojos|Augenfarbe|Cor dos olhos|Colore degli occhi|Kleur ogen|
Göz rengi|Kolor oczu|Warna mata|Ögonfärg|Barva očí|Szemszín|Silmien väri|Silmade värv|Acu krāsa
Signature|Holder's signature|Signature of bearer|Bearer's signature|Signature du titulaire|Firma del titular|
Unterschrift des Inhabers|Assinatura do titular|Firma del titolare|Handtekening|İmzası|Podpis posiadacza|Tanda tangan|
Namnteckning|Podpis držitele|Aláírás|Semnătura|Allekirjoitus|Allkiri|Paraksts|Parašas|Potpis|Chữ ký
Residence|Domicile|Address|Permanent address|Adresse|Domicilio|Wohnort|Anschrift|Residência|Morada|Residenza|
Woonplaats|Adres|Adresi|Miejsce zamieszkania|Alamat|Adress|Bydliště|Lakcím|Adresa|Osoite|Elukoht|Dzīvesvieta|Địa chỉ
Father's name|Name of father|Nom du père|Nombre del padre|Name des Vaters|Nome do pai|Nome del padre|Baba adı|
Imię ojca|Nama ayah|Jméno otce|Apja neve
Mother's name|Name of mother|Nom de la mère|Nombre de la madre|Name der Mutter|Nome da mãe|Nome della madre|Anne adı|
Imię matki|Nama ibu|Jméno matky|Anyja neve
Name at birth|Maiden name|Nom de naissance|Apellido de soltera|Geburtsname|Nome de solteira|Cognome da nubile|
Geboortenaam|Nazwisko rodowe|Rodné příjmení|Születési név
Marital status|Situation de famille|Estado civil|Familienstand|Stato civile|Burgerlijke staat|Medeni hali|
Stan cywilny|Status perkawinan|Rodinný stav|Családi állapot
Profession|Occupation|Profesión|Beruf|Profissão|Professione|Beroep|Mesleği|Zawód|Pekerjaan|Yrke|Povolání|Foglalkozás|
Ammatti
Religion|Religión|Konfession|Religião|Dini|Wyznanie|Agama|Náboženství
Country of issue|Issuing State|Issuing country|Pays émetteur|País emisor|Ausstellerstaat|Estado emissor|
Stato emittente|Land van afgifte|Negara penerbit
Place of issue|Lieu de délivrance|Lugar de expedición|Ausstellungsort|Local de emissão|Luogo di rilascio|
Plaats van afgifte|Düzenlendiği yer|Miejsce wydania|Tempat dikeluarkan|Místo vydání
Previous passport No.|Ancien passeport N°|Pasaporte anterior|Alte Passnummer|Passaporte anterior|
Passaporto precedente|Oud paspoort|Eski pasaport No|Poprzedni paszport
Emergency contact|Personne à prévenir|En caso de emergencia|Im Notfall|Em caso de emergência|In caso di emergenza|
In noodgevallen|Acil durumda|Kontak darurat|Name and address|Telephone|Téléphone|Teléfono|Telefon|Telefone|
Relationship
Observations|Remarks|Endorsements|Official observations|Mentions|Observaciones|Amtliche Vermerke|Observações|
Annotazioni|Aanvullende gegevens|Düşünceler|Adnotacje|Catatan|Anteckningar|Záznamy|Megjegyzések|Menţiuni
Visa|Visas|Visum|Vize|Wiza|Vistos|Visti|Visado|Number of entries|Nombre d'entrées|Número de entradas|
Anzahl der Einreisen|Duration of stay|Durée du séjour|Duración de la estancia|Dauer des Aufenthalts|Valid for|
Valable pour|Válido para|Gültig für|Valid from|Du|Desde|Vom|until|Single entry|Multiple entries
European Union|Union européenne|Unión Europea|Europäische Union|União Europeia|Unione europea|Europese Unie|
Unia Europejska|Europeiska unionen|Evropská unie|Európai Unió|Uniunea Europeană|Euroopan unioni|Euroopa Liit|
Eiropas Savienība|Europos Sąjunga|Europska unija|Evropska unija|An tAontas Eorpach
Republic|République|República|Bundesrepublik|Repubblica|Republiek|Cumhuriyeti|Rzeczpospolita|Republik|Republika|
Köztársaság|Tasavalta|Kingdom of|Royaume de|Reino de|Königreich|Regno di|Koninkrijk der|Kungariket|Commonwealth of|
Federal Republic of|Federation|Socialist Republic|Islamic Republic of|People's Republic of|Sultanate of|
Principality of
Ministry of Foreign Affairs|Ministère des Affaires étrangères|Ministerio de Relaciones Exteriores|Auswärtiges Amt|
Ministério dos Negócios Estrangeiros|Ministero degli Affari Esteri|Ministerie van Buitenlandse Zaken|
Dışişleri Bakanlığı|Ministry of Home Affairs|Department of Immigration|Immigration and Passports|Passport Office|
Préfecture de police|Ministerio del Interior|Bundesdruckerei|Questura|İçişleri Bakanlığı|Kantor Imigrasi|
Ministry of Interior|Civil Registration|Registro Civil|Policía Federal|Home Office
Page|Blatt|Seite|Página|Pagina|Sayfa|Strona|Halaman|Sida|Strana|Oldal|Card No.|Serial No.|Ref.|File number|
Invoice No.|Total|Amount|Quantity|Unit price|Subtotal|Customer|Order date|Due date|Balance|Account No.|Seat|Gate|
Flight|Boarding time|Departure|Arrival|Class|Ticket|Receipt|Category|Blood group|Organ donor|Restrictions|Issued|
Expires|Class of licence|Weight|Hair
Official|Diplomatic|Service|Ordinary|Diplomatique|Ordinaire|Diplomático|Oficial|Ordinario|Dienstpass|Diplomatico|
Servizio|Travel document|Titre de voyage|Documento de viaje|Reiseausweis|Specimen|Spécimen|Muster|Muestra|Espécime|
Sample|Örnek|Wzór|Contoh|Vzor|Minta|Void|Cancelled|Duplicate|Copy
""".strip().replace("|\n", "|").split("\n")]

NAMES = """
Anna María José Juan Luis Carlos Lucía Sofía Javier Iñaki Muñoz García Fernández González Rodríguez López Martínez
Sánchez Pérez Gómez Núñez Ramírez Torres Vázquez Domínguez Jean François Élodie Chloé Zoé Léa André René Hélène Cécile
Benoît Loïc Gaël Dubois Lefèvre Moreau Rousseau Béranger Château Müller Schäfer Köhler Jürgen Günther Björn Käthe Groß
Weiß Schröder Krüger Becker Hoffmann Wagner Schneider Fischer Vogel Zimmermann João Conceição Gonçalves Araújo Simões
Magalhães Antônio Luísa Ferreira Oliveira Pereira Costa Almeida Ribeiro Giulia Niccolò Rossi Bianchi Esposito Ferrari
Colombo Ricci Greco Marino Lombardi Moretti Jan Pieter Willem Sanne Daan Visser Bakker Jansen Smit Dekker Mehmet Ayşe
Gökhan Çelik Şahin Yılmaz Öztürk Kılıç Doğan Aydın Arslan Zeynep Elif Emre Barış Łukasz Wójcik Kamiński Zieliński
Szymański Woźniak Dąbrowski Kozłowski Małgorzata Agnieszka Piotr Paweł Krzysztof Zbigniew Siti Budi Agus Dewi Putri
Wahyu Sri Rahayu Setiawan Wijaya Santoso Hidayat Nurul Prasetyo Åsa Göran Sjöberg Lindström Nyström Öberg Håkan Erik
Karlsson Andersson Johansson Lars Ingrid Søren Jørgensen Kjær Møller Bjørn Þór Guðrún Jónsdóttir Sigurður Ólafsson
Jiří Novák Dvořák Černý Procházka Kučera Veselý Tomáš Kateřina Lukáš Zdeněk László Kovács Szabó Tóth Nagy Horváth
Varga Gábor Zsófia István Ştefan Ionescu Popescu Mihăilescu Andrei Ioana Matti Virtanen Mäkinen Hämäläinen Laine
Korhonen Jääskeläinen Tõnu Kaljulaid Jānis Bērziņš Kalniņš Ozoliņš Vytautas Žemaitis Kazlauskas Jonas Marko Horvat
Kovačević Petrović Đorđević Nikolić Stojanović Živković Zoran Miloš Ana Ivana Janez Krajnc Zupančič Olena Shevchenko
Kovalenko Bondarenko Andriy Volodymyr Taras Ivan Petrov Sergei Smirnov Kuznetsov Popov Dmitri Ekaterina Georgi
Dimitrov Stoyanov Nikolaos Papadopoulos Dimitrios Konstantinos Eleni Mohammed Ahmed Fatima Khalid Abdullah Omar
Youssef Hassan Ibrahim Al-Masri Mariam Layla Noor Salim Rahman Begum Hossain Chowdhury Akter Islam Uddin Sarkar Khatun
Aminul Rafiq Priya Rajesh Kumar Singh Patel Sharma Gupta Reddy Iyer Nair Lakshmi Anjali Vikram Kaur Das Banerjee
Mukherjee Perera Silva Fernando Bandara Nguyễn Trần Phạm Lê Hoàng Văn Thị Hương Minh Đức Anh Linh Wei Zhang Wang Li
Chen Liu Yang Huang Zhao Xu Sun Ma Lin Xiaoming Mei Ling Tan Wong Chan Cheung Leung Kim Lee Park Choi Jung Min-jun
Ji-woo Seo-yeon Yuki Haruto Sakura Tanaka Suzuki Satō Watanabe Itō Yamamoto Nakamura Kobayashi Katō Kenji Hiroshi
Akira Reyes Santos Cruz Bautista dela Ocampo Villanueva Maricel Jomar Chukwu Okafor Adeyemi Oluwaseun Ngozi Adebayo
Chinwe Ifeoma Mensah Kwame Akosua Owusu Boateng Ama Kipchoge Wanjiku Otieno Mwangi Njoroge Kamau Achieng Tesfaye Abebe
Haile Mulugeta Ndlovu Dlamini Nkosi Thandiwe Sipho Botha van der Merwe Pretorius Smith Jones Taylor Brown Williams
Wilson Johnson Davies Robinson Wright Thompson Evans Walker White Roberts Green Hall Wood Jackson Clarke Hughes
Edwards Turner Morgan Cooper Ward Bailey Murphy O'Brien O'Connor McDonald MacLeod Siobhán Seán Niamh Aoife Ciarán
Gráinne James Mary John Patricia Robert Jennifer Michael Linda David Elizabeth William Barbara Richard Susan Thomas
Jessica Charles Sarah Daniel Karen Matthew Lisa Anthony Nancy Mark Betty Donald Margaret Steven Sandra Andrew Ashley
Emily Joshua Olivia Liam Noah Emma Ava Sophia Isabella Mia Charlotte Amelia Harper Evelyn Abigail Grace Victoria
Eleanor Rose Violet Ruby Alice Oscar Leo Alfie Freddie Archie
""".split()

PLACES = """
London|Manchester|Leeds|Glasgow|Cardiff|Belfast|Dublin|Cork|Paris|Lyon|Marseille|Orléans|Saint-Étienne|Besançon|Nîmes|
Genève|Zürich|Bern|Basel|Wien|Graz|Salzburg|Berlin|Hamburg|München|Köln|Düsseldorf|Nürnberg|Würzburg|
Frankfurt am Main|Lübeck|Madrid|Barcelona|Sevilla|Málaga|A Coruña|Cádiz|Logroño|Lisboa|Porto|Évora|Setúbal|Coimbra|
São Paulo|Rio de Janeiro|Brasília|Belo Horizonte|Goiânia|Maceió|Roma|Milano|Napoli|Forlì|Torino|Palermo|Amsterdam|
Rotterdam|Den Haag|'s-Gravenhage|Utrecht|Eindhoven|Bruxelles|Antwerpen|Liège|Luxembourg|İstanbul|Ankara|İzmir|Bursa|
Diyarbakır|Eskişehir|Şanlıurfa|Warszawa|Kraków|Łódź|Wrocław|Poznań|Gdańsk|Białystok|Rzeszów|Jakarta|Surabaya|Bandung|
Medan|Yogyakarta|Denpasar|Stockholm|Göteborg|Malmö|Linköping|Oslo|Bergen|Tromsø|Bodø|København|Århus|Ålborg|Helsinki|
Jyväskylä|Tampere|Reykjavík|Tallinn|Tartu|Rīga|Liepāja|Vilnius|Kaunas|Klaipėda|Praha|Brno|České Budějovice|Plzeň|
Bratislava|Košice|Budapest|Győr|Pécs|Bucureşti|Iaşi|Timişoara|Cluj-Napoca|Sofia|Plovdiv|Beograd|Niš|Zagreb|Split|
Sarajevo|Ljubljana|Skopje|Tirana|Athens|Thessaloniki|Kyiv|Kharkiv|Lviv|Odesa|Chişinău|Minsk|Moscow|Saint Petersburg|
Tbilisi|Yerevan|Baku|Astana|Tashkent|Dhaka|Khulna|Chattogram|Sylhet|Barishal|Rangpur|Mymensingh|Kolkata|Mumbai|
New Delhi|Chennai|Bengaluru|Hyderabad|Jaipur|Lucknow|Karachi|Lahore|Islamabad|Peshawar|Colombo|Kandy|Kathmandu|
Bangkok|Chiang Mai|Hà Nội|Đà Nẵng|Ho Chi Minh City|Phnom Penh|Vientiane|Kuala Lumpur|Penang|Johor Bahru|Singapore|
Manila|Quezon City|Cebu|Davao|Beijing|Shanghai|Guangzhou|Sichuan|Guangdong|Zhejiang|Fujian|Hong Kong|Macau|Taipei|
Tokyo|Osaka|Kyoto|Sapporo|Nagoya|Hokkaido|Seoul|Busan|Sydney|Melbourne|Brisbane|Perth|Auckland|Wellington|
Christchurch|New York|U.S.A.|Washington, D.C.|California|Los Angeles|San Francisco|Chicago, Illinois|Houston, Texas|
Boston, MA|Toronto|Montréal|Québec|Vancouver|Ottawa|México, D.F.|Guadalajara|Mérida|Bogotá|Medellín|Cúcuta|Lima|Cusco|
Quito|Guayaquil|Caracas|Maracaibo|La Paz|Asunción|Montevideo|Buenos Aires|Córdoba|Rosario|Santiago|Valparaíso|
Concepción|San José|Panamá|Santo Domingo|La Habana|Kingston|Port-au-Prince|Cairo|Alexandria|Casablanca|Rabat|Tunis|
Algiers|Tripoli|Khartoum|Lagos|Abuja|Ibadan|Kano|Accra|Kumasi|Abidjan|Dakar|Bamako|Ouagadougou|Yaoundé|Lomé|Nairobi|
Mombasa|Kampala|Kigali|Dar es Salaam|Addis Ababa|Harare|Lusaka|Johannesburg|Cape Town|Durban|Pretoria|Tehran|Baghdad|
Damascus|Beirut|Amman|Riyadh|Jeddah|Dubai|Abu Dhabi|Doha|Kuwait City|Muscat|Tel Aviv|Jerusalem|Haifa
""".replace("\n", "").split("|")

COUNTRIES = """
Utopia|France|Deutschland|España|Portugal|Italia|Nederland|Türkiye|Polska|Indonesia|Sverige|Česká republika|
Magyarország|România|Suomi|Eesti|Latvija|Lietuva|Hrvatska|Slovenija|Slovensko|Österreich|Schweiz|Suisse|Svizzera|
Danmark|Norge|Ísland|Ireland|Éire|United Kingdom|Great Britain|United States of America|Canada|Australia|New Zealand|
Brasil|México|Argentina|Colombia|Perú|Chile|Ecuador|Venezuela|Bolivia|Paraguay|Uruguay|Cuba|Việt Nam|Philippines|
Malaysia|Singapore|Thailand|Myanmar|Bangladesh|India|Pakistan|Nepal|Sri Lanka|China|Japan|Republic of Korea|Mongolia|
Kazakhstan|Uzbekistan|Georgia|Armenia|Azerbaijan|Ukraine|Belarus|Moldova|Russian Federation|Serbia|Montenegro|
Bosnia and Herzegovina|North Macedonia|Albania|Greece|Cyprus|Malta|Bulgaria|Israel|Jordan|Lebanon|Syria|Iraq|Iran|
Saudi Arabia|United Arab Emirates|Qatar|Kuwait|Oman|Egypt|Morocco|Tunisia|Algeria|Nigeria|Ghana|Senegal|Côte d'Ivoire|
Cameroon|Kenya|Uganda|Tanzania|Ethiopia|South Africa|Zimbabwe|Zambia|Angola|Mozambique|British|American|French|German|
Spanish|Portuguese|Italian|Turkish|Polish|Indian|Bangladeshi|Chinese|Japanese|Canadian|Australian|Deutsch|Française|
Español|Brasileiro|Italiana|Nederlandse|Utopian
""".replace("\n", "").split("|")

CODES = """
UTO GBR USA FRA BGD IND CHN ESP ITA POL NLD CAN BRA TUR EGY NGA PAK PHL IDN VNM UKR SWE ZAF D AUT CHE BEL PRT CZE HUN
ROU LTU LVA EST FIN NOR DNK ISL IRL JPN KOR AUS NZL MEX ARG COL PER CHL EU SGP MYS THA LKA NPL
""".split()

MONTHS = [row.split() for row in """
Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec
Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec
January February March April May June July August September October November December
Janv Févr Mars Avr Mai Juin Juil Août Sept Oct Nov Déc
janvier février mars avril mai juin juillet août septembre octobre novembre décembre
Ene Feb Mar Abr May Jun Jul Ago Sep Oct Nov Dic
enero febrero marzo abril mayo junio julio agosto septiembre octubre noviembre diciembre
Jan Feb Mär Apr Mai Jun Jul Aug Sep Okt Nov Dez
Januar Februar März April Mai Juni Juli August September Oktober November Dezember
Jan Fev Mar Abr Mai Jun Jul Ago Set Out Nov Dez
Gen Feb Mar Apr Mag Giu Lug Ago Set Ott Nov Dic
Oca Şub Mar Nis May Haz Tem Ağu Eyl Eki Kas Ara
Sty Lut Mar Kwi Maj Cze Lip Sie Wrz Paź Lis Gru
""".strip().split("\n")]

SENTENCES = """
This passport remains the property of the state and must be returned on demand to the office that issued it.
The bearer is requested to enter particulars below of a relative or a friend who may be contacted in the event of an
  accident.
This book contains thirty-two numbered pages; no page may be taken out, and nothing may be written in it by others
  than officials.
In the name of the President, all whom it may concern are asked to let the bearer pass freely and to give every help
  and protection.
Loss, theft or damage must be reported at once to the nearest police station and to an embassy, consulate or high
  commission.
Valid for all countries unless otherwise endorsed. Not valid unless signed by the holder with ink in the space
  provided.
This document holds a chip with sensitive electronics: do not bend, perforate or expose to excess heat, moisture or
  magnetic fields.
Children who travel abroad with their parents need a passport of their own; see the notes on the last page.
A fee is charged for the replacement of a lost card; keep it in a safe place and never lend it to another person.
Applications are to be made in writing with two recent photographs, a birth certificate and proof of address.
The holder shall have the right of abode and may stay for a period not exceeding ninety days from the date of entry.
Please check that your personal details are correct, sign in black ink and tell us at once of any change of name or
  address.
Any alteration, addition or erasure will make it invalid, and the owner will be liable to prosecution under the law.
If found, please return to the nearest police station or post it unstamped to the address shown on the reverse side.
Issued under the authority of the Minister and subject to the regulations that are in force at the time of travel.
Employment prohibited. Leave to remain until the date shown. Permitted to work in regulated occupations only.
Terms and conditions apply: tickets are neither transferable nor refundable, and doors close fifteen minutes before
  departure.
Thank you for your purchase; goods may be exchanged within fourteen days when this receipt is shown at the counter.
Le titulaire du présent passeport est placé sous la protection des autorités françaises et prié d'écrire
  lisiblement.
Ce passeport contient trente-deux pages; toute modification le rend nul. Il doit être restitué à l'autorité qui l'a
  délivré.
En cas de perte ou de vol, prévenez immédiatement les services de police ou le consulat le plus proche.
Este pasaporte es propiedad del Estado y su titular está obligado a conservarlo y a presentarlo cuando sea requerido
  por la autoridad.
Se ruega a las autoridades nacionales y extranjeras que faciliten al titular el libre paso y le presten la ayuda que
  necesite.
Este documento no será válido sin la firma del interesado; cualquier enmienda o raspadura anulará su validez.
Dieser Pass ist Eigentum der Bundesrepublik und enthält zweiunddreißig Seiten. Änderungen dürfen nur Behörden
  vornehmen.
Der Inhaber ist verpflichtet, den Verlust des Ausweises unverzüglich der zuständigen Behörde anzuzeigen und ihn
  sorgfältig aufzubewahren.
Este passaporte é propriedade do Estado e deve ser apresentado às autoridades sempre que solicitado; não é válido
  sem assinatura.
Il titolare è tenuto a firmare il passaporto; il presente documento è valido per tutti i paesi il cui governo è
  riconosciuto.
Dit paspoort blijft eigendom van de Staat en moet worden ingeleverd wanneer de bevoegde autoriteit daarom vraagt.
Bu pasaport kırk sekiz sayfadır; kaybolması hâlinde en yakın polis merkezine veya konsolosluğa derhal
  başvurulmalıdır.
Paszport jest własnością państwa i uprawnia do przekraczania granicy oraz pobytu za granicą; należy go chronić przed
  zniszczeniem.
Paspor ini berlaku untuk semua negara di dunia; pemegang wajib menjaga dan menyimpan dokumen perjalanan ini dengan
  baik.
""".strip().replace("\n  ", " ").split("\n")

OTHERS = """
Male Female M F X Brown Blue Green Black Grey Hazel Single Married Widowed Divorced Student Engineer Teacher Farmer
Nurse Driver Merchant Housewife Doctor Lawyer Retired Clerk Pupil Journalist Sailor Tailor Étudiant Ingeniero Lehrer
Médico Empleado Wife Husband Son Daughter Brother Sister Uncle Cousin Friend Road Street Lane Avenue House Flat
Village District Post Office Police Station County Province Region State City Town Upazila Thana Block Ward North
South East West Upper Lower Old New First Second Third Regular Official Private Public Limited Company Bank Insurance
University School Hospital Embassy Consulate Airport Airlines Express Economy Business Hotel Market Tax Net Gross Paid
Cash Change Credit Debit Card Thank You Welcome Open Closed Monday Tuesday Wednesday Thursday Friday Saturday Sunday
Ltd. Inc. GmbH S.A. Co. Dr. Mr. Mrs. Ms. Prof. St. Jr. Sr. No. Nr. Tel. Fax E-mail www. Visa Entry Exit Stamp Photo
Thumb Print Chip Code Scan Here Sign Below Above None
""".split()
