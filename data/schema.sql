-- SPDX-License-Identifier: GPL-3.0-or-later
-- Lotwright.db: the tables, keys and saved queries of the program's one
-- database. The program runs this file, then seed.sql, once, inside one
-- transaction, when it makes a new database; it sets the pragmas itself.
--
-- Everything here is plain SQLite (3.40 and later): no function of the
-- program's own is named, so the file opens and answers in the sqlite3 shell
-- or any SQLite browser. Nothing here may set a pragma or fill Protocols.
--
-- Conventions of every table:
--   * Text columns are TEXT COLLATE NOCASE: comparisons, keys and sorts ignore
--     ASCII case. The store trims trailing blanks from every text it writes
--     or binds, so "123 " finds "123".
--   * Money and dates are text as scraped or typed ("$1,234.50", "-", "n/a",
--     "06/07/00, 12:04:00 PST"). Where SQL needs their value, a stored
--     generated column holds it:
--       <Column>Num  the number rule: currency signs, separators and blanks
--                    dropped, "(5.00)" is -5, anything not numeric is 0;
--       EndDay       the ISO day ("2000-06-07") of a text that starts
--                    "mm/dd/yy", else NULL; years below 97 are 20yy;
--       EndYear      the year of EndDay;
--       EndStamp     EndDay and the time of day, sortable.
--     These expressions are character for character those that the program's
--     own number and date rules produce, and must stay so.
--   * Flags are INTEGER 1/0. Readers take any non-zero value as True (an old
--     -1 included) and Null as False. The update run writes a flag scraped
--     as "True" or "False" as 1 or 0, and never writes into a number or flag
--     column a text that is no number.
--   * Number columns that the program looks up by 0 (AuctionSiteFlag,
--     AuctionCreatorID, InventoryID, FolderParent) default to 0, because a
--     row added without them must still answer "= 0".
--   * Key columns are never NOT NULL: an update run may write a row whose key
--     is Null or blank, and the repair after the run deletes it.
--   * Dates that are real date values (CreationDate, TrackingDate, DateEntered,
--     TransDate) are text "YYYY-MM-DD HH:MM:SS", which sorts.

---------------------------------------------------------------------------
-- Users and sites
---------------------------------------------------------------------------

CREATE TABLE Users (
    UserName TEXT COLLATE NOCASE,
    isDefault INTEGER DEFAULT 0,
    InternetConnection INTEGER DEFAULT 0,
    ProxyServer TEXT COLLATE NOCASE,
    ProxyPort TEXT COLLATE NOCASE,
    MailServer TEXT COLLATE NOCASE,
    ReplyEmailAddress TEXT COLLATE NOCASE,
    SalesTaxRate REAL,
    SFirstName TEXT COLLATE NOCASE,
    SMiddleName TEXT COLLATE NOCASE,
    SLastName TEXT COLLATE NOCASE,
    STitle TEXT COLLATE NOCASE,
    SCompanyName TEXT COLLATE NOCASE,
    AddressStreet1 TEXT COLLATE NOCASE,
    AddressStreet2 TEXT COLLATE NOCASE,
    City TEXT COLLATE NOCASE,
    State TEXT COLLATE NOCASE,
    zipcode TEXT COLLATE NOCASE,
    country TEXT COLLATE NOCASE,
    PFirstName TEXT COLLATE NOCASE,
    PMiddleName TEXT COLLATE NOCASE,
    PLastName TEXT COLLATE NOCASE,
    PTitle TEXT COLLATE NOCASE,
    PCompanyName TEXT COLLATE NOCASE,
    PAddressStreet1 TEXT COLLATE NOCASE,
    PAddressStreet2 TEXT COLLATE NOCASE,
    PCity TEXT COLLATE NOCASE,
    PState TEXT COLLATE NOCASE,
    PZIPCode TEXT COLLATE NOCASE,      -- also read as Pzipcode: names are case-blind
    PCountry TEXT COLLATE NOCASE,
    AuctionRemoveTag TEXT COLLATE NOCASE,
    BidRemoveTag TEXT COLLATE NOCASE
);
CREATE UNIQUE INDEX UsersKey ON Users (UserName);

CREATE TABLE UserSites (
    UserName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    UserID TEXT COLLATE NOCASE,
    UserPassword TEXT COLLATE NOCASE,
    EncodedPassword TEXT COLLATE NOCASE,
    SiteEmailAddress TEXT COLLATE NOCASE,
    LastUpdate TEXT COLLATE NOCASE,
    LocationPref TEXT COLLATE NOCASE,
    ZIPCodePref TEXT COLLATE NOCASE,   -- also read as ZipCodePref
    ShipFromCountryPref TEXT COLLATE NOCASE,
    duration INTEGER,
    ShipAbroadPref INTEGER DEFAULT 0,
    shipUSPlus INTEGER DEFAULT 0,
    northamerica INTEGER DEFAULT 0,
    europe INTEGER DEFAULT 0,
    oceania INTEGER DEFAULT 0,
    asia INTEGER DEFAULT 0,
    southamerica INTEGER DEFAULT 0,
    africa INTEGER DEFAULT 0,
    latinamerica INTEGER DEFAULT 0,
    middleeast INTEGER DEFAULT 0,
    caribbean INTEGER DEFAULT 0,
    ShipPayPref TEXT COLLATE NOCASE,
    PaymentTypePref TEXT COLLATE NOCASE,
    billpoint INTEGER DEFAULT 0
);
CREATE UNIQUE INDEX UserSitesKey ON UserSites (UserName, AuctionSiteFlag);

-- One row, program-wide. eBayCorrection stays Null until the site clock has
-- been read: every reader takes Null as 0.
CREATE TABLE Global (
    eBayTime TEXT COLLATE NOCASE,
    eBayCorrection REAL,
    AutoUpdateTimeLeft INTEGER DEFAULT 0,
    TimeLeftInterval INTEGER,
    PasswordInStoreTold INTEGER DEFAULT 0  -- 1 once the user heard the site password is kept here
);

-- One row of usage counters.
CREATE TABLE Tracking (
    TrackingDate TEXT COLLATE NOCASE,
    AuctionsPosted INTEGER DEFAULT 0,
    Updates INTEGER DEFAULT 0,
    RubyLaneClick INTEGER DEFAULT 0,
    SendEmail INTEGER DEFAULT 0,
    RubyLane INTEGER DEFAULT 0,
    Paypal INTEGER DEFAULT 0,
    Billpoint INTEGER DEFAULT 0
);

-- The rule texts, addressed by position (rowid order): the program inserts
-- the two rows itself from the shipped rule files.
CREATE TABLE Protocols (
    ProtocolName TEXT COLLATE NOCASE,
    ProtocolData TEXT COLLATE NOCASE
);

---------------------------------------------------------------------------
-- Sales, bids and multi-winner items
---------------------------------------------------------------------------

-- One row per item the user sold. An update run writes more columns than the
-- program names; the ones that rule files add are declared here too, so that
-- no write is lost. The post-sale columns (order, payment, shipping, feedback,
-- mail marks) are the same in Auctions, Bids and Dutch.
CREATE TABLE Auctions (
    UserName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    ItemNumber TEXT COLLATE NOCASE,
    ItemTitle TEXT COLLATE NOCASE,
    ItemCategory TEXT COLLATE NOCASE,
    StartDate TEXT COLLATE NOCASE,
    EndDate TEXT COLLATE NOCASE,
    MinimumBid TEXT COLLATE NOCASE,
    ReserveBid TEXT COLLATE NOCASE,
    HighBid TEXT COLLATE NOCASE,
    Quantity TEXT COLLATE NOCASE,
    NumberBids TEXT COLLATE NOCASE,
    HighBidderName TEXT COLLATE NOCASE,
    HighBidderFeedback TEXT COLLATE NOCASE,
    AuctionCreatorID INTEGER DEFAULT 0,
    InventoryID INTEGER DEFAULT 0,
    ItemCost TEXT COLLATE NOCASE,
    ShippingCost TEXT COLLATE NOCASE,
    InsuranceCost TEXT COLLATE NOCASE,
    OrderShipping TEXT COLLATE NOCASE,
    OrderTax TEXT COLLATE NOCASE,
    OrderAmountofSale TEXT COLLATE NOCASE,
    OrderPaymentMethod INTEGER,        -- row of the payment list; Null when none
    OrderPaymentNumber TEXT COLLATE NOCASE,
    OrderPaymentDate TEXT COLLATE NOCASE,
    OrderPaymentBank TEXT COLLATE NOCASE,
    OrderPaymentCleared INTEGER DEFAULT 0,
    OrderPaymentClearedDate TEXT COLLATE NOCASE,
    OrderCreditCardType TEXT COLLATE NOCASE,
    OrderExpireMonth TEXT COLLATE NOCASE,
    OrderExpireYear TEXT COLLATE NOCASE,
    ShippingMethod TEXT COLLATE NOCASE,
    ShippingDate TEXT COLLATE NOCASE,
    ShippingTrackingNumber TEXT COLLATE NOCASE,
    ShippingInsuranceNumber TEXT COLLATE NOCASE,
    AuctionNotes TEXT COLLATE NOCASE,
    -- Mail marks of the sales tasks; ToDo names them (AdditionalParam2/3 of
    -- "Email" rows, AdditionalParam4/5 of "EmailEntry" rows).
    EmailEndOfAuction INTEGER DEFAULT 0,
    EmailEndOfAuctionDate TEXT COLLATE NOCASE,
    EmailPaymentReceived INTEGER DEFAULT 0,
    EmailPaymentReceivedDate TEXT COLLATE NOCASE,
    EmailItemShipped INTEGER DEFAULT 0,
    EmailItemShippedDate TEXT COLLATE NOCASE,
    EmailBuyerReceived INTEGER DEFAULT 0,
    EmailBuyerReceivedDate TEXT COLLATE NOCASE,
    EmailRequestFeedback INTEGER DEFAULT 0,
    EmailRequestFeedbackDate TEXT COLLATE NOCASE,
    FeedbackLeft INTEGER DEFAULT 0,
    FeedbackLeftDate TEXT COLLATE NOCASE,
    FeedbackLeftType INTEGER,          -- 0 positive, 1 neutral, 2 negative
    FeedbackLeftComment TEXT COLLATE NOCASE,
    ReturnFeedback INTEGER DEFAULT 0,
    ReturnFeedbackDate TEXT COLLATE NOCASE,
    ReturnFeedbackType INTEGER,
    ReturnFeedbackComment TEXT COLLATE NOCASE,
    PackingListPrinted INTEGER DEFAULT 0,
    ToDoComplete INTEGER DEFAULT 0,
    HighBidNum REAL GENERATED ALWAYS AS (CASE WHEN HighBid IS NULL THEN 0 WHEN HighBid GLOB '$[0-9]*' AND HighBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(HighBid,2),',','') AS REAL) WHEN ltrim(HighBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    MinimumBidNum REAL GENERATED ALWAYS AS (CASE WHEN MinimumBid IS NULL THEN 0 WHEN MinimumBid GLOB '$[0-9]*' AND MinimumBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(MinimumBid,2),',','') AS REAL) WHEN ltrim(MinimumBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ReserveBidNum REAL GENERATED ALWAYS AS (CASE WHEN ReserveBid IS NULL THEN 0 WHEN ReserveBid GLOB '$[0-9]*' AND ReserveBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ReserveBid,2),',','') AS REAL) WHEN ltrim(ReserveBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ReserveBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ReserveBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ItemCostNum REAL GENERATED ALWAYS AS (CASE WHEN ItemCost IS NULL THEN 0 WHEN ItemCost GLOB '$[0-9]*' AND ItemCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ItemCost,2),',','') AS REAL) WHEN ltrim(ItemCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ShippingCostNum REAL GENERATED ALWAYS AS (CASE WHEN ShippingCost IS NULL THEN 0 WHEN ShippingCost GLOB '$[0-9]*' AND ShippingCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ShippingCost,2),',','') AS REAL) WHEN ltrim(ShippingCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    InsuranceCostNum REAL GENERATED ALWAYS AS (CASE WHEN InsuranceCost IS NULL THEN 0 WHEN InsuranceCost GLOB '$[0-9]*' AND InsuranceCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(InsuranceCost,2),',','') AS REAL) WHEN ltrim(InsuranceCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderShippingNum REAL GENERATED ALWAYS AS (CASE WHEN OrderShipping IS NULL THEN 0 WHEN OrderShipping GLOB '$[0-9]*' AND OrderShipping NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderShipping,2),',','') AS REAL) WHEN ltrim(OrderShipping,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderTaxNum REAL GENERATED ALWAYS AS (CASE WHEN OrderTax IS NULL THEN 0 WHEN OrderTax GLOB '$[0-9]*' AND OrderTax NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderTax,2),',','') AS REAL) WHEN ltrim(OrderTax,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderAmountofSaleNum REAL GENERATED ALWAYS AS (CASE WHEN OrderAmountofSale IS NULL THEN 0 WHEN OrderAmountofSale GLOB '$[0-9]*' AND OrderAmountofSale NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderAmountofSale,2),',','') AS REAL) WHEN ltrim(OrderAmountofSale,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    StartDay TEXT GENERATED ALWAYS AS (CASE WHEN StartDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(StartDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(StartDate,7,2) || '-' || substr(StartDate,1,2) || '-' || substr(StartDate,4,2) END) STORED,
    EndDay TEXT GENERATED ALWAYS AS (CASE WHEN EndDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(EndDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(EndDate,7,2) || '-' || substr(EndDate,1,2) || '-' || substr(EndDate,4,2) END) STORED,
    EndYear INTEGER GENERATED ALWAYS AS (CAST(substr(EndDay,1,4) AS INTEGER)) STORED,
    EndStamp TEXT GENERATED ALWAYS AS (CASE WHEN EndDay IS NOT NULL THEN EndDay || ' ' || substr(EndDate,11,8) END) STORED,
    -- 1 for a sale that counts in the analysis: a bid that met the reserve,
    -- on an item that is not the parent row of a multi-winner sale.
    SaleCounted INTEGER GENERATED ALWAYS AS (HighBidNum >= ReserveBidNum AND HighBidNum > 0 AND IFNULL(HighBidderName, '') <> 'Dutch Auction') STORED
);
-- Every index is paid for by every row an update or a post writes, so there
-- are no more than the reading needs. The key, item number first, also finds
-- an item of any user; a user's rows are found by the end-day index.
CREATE UNIQUE INDEX AuctionsKey ON Auctions (ItemNumber, UserName, AuctionSiteFlag);
CREATE INDEX AuctionsByUserEnd ON Auctions (UserName, EndDay);
-- Covers the yearly sales sums: no table row is read for them.
CREATE INDEX AuctionsAnalysis ON Auctions (UserName, SaleCounted, EndYear, EndDay, HighBidNum);
CREATE INDEX AuctionsByBidder ON Auctions (HighBidderName);
-- The task lists read the open sales of a user by end day: the finished ones,
-- most of a long history, are never visited.
CREATE INDEX AuctionsOpenTasks ON Auctions (UserName, IFNULL(ToDoComplete, 0), EndDay);
-- Only the sales of a stock item: a reader asks for InventoryID > 0 too.
CREATE INDEX AuctionsByInventory ON Auctions (InventoryID) WHERE InventoryID > 0;

-- One row per item the user bid on: the scraped columns of Auctions, the same
-- post-sale columns, and the buyer's own.
CREATE TABLE Bids (
    UserName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    ItemNumber TEXT COLLATE NOCASE,
    ItemTitle TEXT COLLATE NOCASE,
    ItemCategory TEXT COLLATE NOCASE,
    StartDate TEXT COLLATE NOCASE,
    EndDate TEXT COLLATE NOCASE,
    MinimumBid TEXT COLLATE NOCASE,
    ReserveBid TEXT COLLATE NOCASE,
    HighBid TEXT COLLATE NOCASE,
    Quantity TEXT COLLATE NOCASE,
    NumberBids TEXT COLLATE NOCASE,
    HighBidderName TEXT COLLATE NOCASE,
    HighBidderFeedback TEXT COLLATE NOCASE,
    SellerName TEXT COLLATE NOCASE,
    SellerFeedback TEXT COLLATE NOCASE,
    Winning INTEGER DEFAULT 0,
    WinningBid TEXT COLLATE NOCASE,
    MaximumBid TEXT COLLATE NOCASE,
    ItemCost TEXT COLLATE NOCASE,
    ShippingCost TEXT COLLATE NOCASE,
    InsuranceCost TEXT COLLATE NOCASE,
    OrderShipping TEXT COLLATE NOCASE,
    OrderTax TEXT COLLATE NOCASE,
    OrderAmountofSale TEXT COLLATE NOCASE,
    OrderPaymentMethod INTEGER,
    OrderPaymentNumber TEXT COLLATE NOCASE,
    OrderPaymentDate TEXT COLLATE NOCASE,
    OrderPaymentBank TEXT COLLATE NOCASE,
    OrderPaymentCleared INTEGER DEFAULT 0,
    OrderPaymentClearedDate TEXT COLLATE NOCASE,
    OrderCreditCardType TEXT COLLATE NOCASE,
    OrderExpireMonth TEXT COLLATE NOCASE,
    OrderExpireYear TEXT COLLATE NOCASE,
    ShippingMethod TEXT COLLATE NOCASE,
    ShippingDate TEXT COLLATE NOCASE,
    ShippingTrackingNumber TEXT COLLATE NOCASE,
    ShippingInsuranceNumber TEXT COLLATE NOCASE,
    BidNotes TEXT COLLATE NOCASE,
    "Item Received" INTEGER DEFAULT 0,
    ItemReceivedDate TEXT COLLATE NOCASE,
    ItemCondition INTEGER,             -- rows of the panel's lists
    ItemPackaging INTEGER,
    ItemTimeliness INTEGER,
    ItemCommunication INTEGER,
    ItemNotes TEXT COLLATE NOCASE,
    -- Mail marks of the bid tasks.
    EmailPaymentInfo INTEGER DEFAULT 0,
    EmailPaymentInfoDate TEXT COLLATE NOCASE,
    EmailCongratsReply INTEGER DEFAULT 0,
    EmailCongratsReplyDate TEXT COLLATE NOCASE,
    EmailItemReceived INTEGER DEFAULT 0,
    EmailItemReceivedDate TEXT COLLATE NOCASE,
    EmailRequestFeedback INTEGER DEFAULT 0,
    EmailRequestFeedbackDate TEXT COLLATE NOCASE,
    FeedbackLeft INTEGER DEFAULT 0,
    FeedbackLeftDate TEXT COLLATE NOCASE,
    FeedbackLeftType INTEGER,
    FeedbackLeftComment TEXT COLLATE NOCASE,
    ReturnFeedback INTEGER DEFAULT 0,
    ReturnFeedbackDate TEXT COLLATE NOCASE,
    ReturnFeedbackType INTEGER,
    ReturnFeedbackComment TEXT COLLATE NOCASE,
    PackingListPrinted INTEGER DEFAULT 0,
    ToDoComplete INTEGER DEFAULT 0,
    HighBidNum REAL GENERATED ALWAYS AS (CASE WHEN HighBid IS NULL THEN 0 WHEN HighBid GLOB '$[0-9]*' AND HighBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(HighBid,2),',','') AS REAL) WHEN ltrim(HighBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    MinimumBidNum REAL GENERATED ALWAYS AS (CASE WHEN MinimumBid IS NULL THEN 0 WHEN MinimumBid GLOB '$[0-9]*' AND MinimumBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(MinimumBid,2),',','') AS REAL) WHEN ltrim(MinimumBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ReserveBidNum REAL GENERATED ALWAYS AS (CASE WHEN ReserveBid IS NULL THEN 0 WHEN ReserveBid GLOB '$[0-9]*' AND ReserveBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ReserveBid,2),',','') AS REAL) WHEN ltrim(ReserveBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ReserveBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ReserveBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    WinningBidNum REAL GENERATED ALWAYS AS (CASE WHEN WinningBid IS NULL THEN 0 WHEN WinningBid GLOB '$[0-9]*' AND WinningBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(WinningBid,2),',','') AS REAL) WHEN ltrim(WinningBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(WinningBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(WinningBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    MaximumBidNum REAL GENERATED ALWAYS AS (CASE WHEN MaximumBid IS NULL THEN 0 WHEN MaximumBid GLOB '$[0-9]*' AND MaximumBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(MaximumBid,2),',','') AS REAL) WHEN ltrim(MaximumBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(MaximumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(MaximumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ItemCostNum REAL GENERATED ALWAYS AS (CASE WHEN ItemCost IS NULL THEN 0 WHEN ItemCost GLOB '$[0-9]*' AND ItemCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ItemCost,2),',','') AS REAL) WHEN ltrim(ItemCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ShippingCostNum REAL GENERATED ALWAYS AS (CASE WHEN ShippingCost IS NULL THEN 0 WHEN ShippingCost GLOB '$[0-9]*' AND ShippingCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ShippingCost,2),',','') AS REAL) WHEN ltrim(ShippingCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    InsuranceCostNum REAL GENERATED ALWAYS AS (CASE WHEN InsuranceCost IS NULL THEN 0 WHEN InsuranceCost GLOB '$[0-9]*' AND InsuranceCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(InsuranceCost,2),',','') AS REAL) WHEN ltrim(InsuranceCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderShippingNum REAL GENERATED ALWAYS AS (CASE WHEN OrderShipping IS NULL THEN 0 WHEN OrderShipping GLOB '$[0-9]*' AND OrderShipping NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderShipping,2),',','') AS REAL) WHEN ltrim(OrderShipping,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderTaxNum REAL GENERATED ALWAYS AS (CASE WHEN OrderTax IS NULL THEN 0 WHEN OrderTax GLOB '$[0-9]*' AND OrderTax NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderTax,2),',','') AS REAL) WHEN ltrim(OrderTax,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderAmountofSaleNum REAL GENERATED ALWAYS AS (CASE WHEN OrderAmountofSale IS NULL THEN 0 WHEN OrderAmountofSale GLOB '$[0-9]*' AND OrderAmountofSale NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderAmountofSale,2),',','') AS REAL) WHEN ltrim(OrderAmountofSale,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    StartDay TEXT GENERATED ALWAYS AS (CASE WHEN StartDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(StartDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(StartDate,7,2) || '-' || substr(StartDate,1,2) || '-' || substr(StartDate,4,2) END) STORED,
    EndDay TEXT GENERATED ALWAYS AS (CASE WHEN EndDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(EndDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(EndDate,7,2) || '-' || substr(EndDate,1,2) || '-' || substr(EndDate,4,2) END) STORED,
    EndYear INTEGER GENERATED ALWAYS AS (CAST(substr(EndDay,1,4) AS INTEGER)) STORED,
    EndStamp TEXT GENERATED ALWAYS AS (CASE WHEN EndDay IS NOT NULL THEN EndDay || ' ' || substr(EndDate,11,8) END) STORED
);
CREATE UNIQUE INDEX BidsKey ON Bids (ItemNumber, UserName, AuctionSiteFlag);
CREATE INDEX BidsByUserEnd ON Bids (UserName, EndDay);
CREATE INDEX BidsBySeller ON Bids (SellerName);
CREATE INDEX BidsOpenTasks ON Bids (UserName, IFNULL(ToDoComplete, 0), EndDay);

-- One row per winner of a multi-winner sale of the user. The item's own
-- columns (title, dates, start price) stay in its Auctions row, whose
-- HighBidderName is "Dutch Auction"; the post-sale columns live here.
CREATE TABLE Dutch (
    ItemNumber TEXT COLLATE NOCASE,
    UserName TEXT COLLATE NOCASE,
    HighBidderName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    Quantity TEXT COLLATE NOCASE,
    HighBid TEXT COLLATE NOCASE,
    HighBidderFeedback TEXT COLLATE NOCASE,
    ItemCost TEXT COLLATE NOCASE,
    ShippingCost TEXT COLLATE NOCASE,
    InsuranceCost TEXT COLLATE NOCASE,
    OrderShipping TEXT COLLATE NOCASE,
    OrderTax TEXT COLLATE NOCASE,
    OrderAmountofSale TEXT COLLATE NOCASE,
    OrderPaymentMethod INTEGER,
    OrderPaymentNumber TEXT COLLATE NOCASE,
    OrderPaymentDate TEXT COLLATE NOCASE,
    OrderPaymentBank TEXT COLLATE NOCASE,
    OrderPaymentCleared INTEGER DEFAULT 0,
    OrderPaymentClearedDate TEXT COLLATE NOCASE,
    OrderCreditCardType TEXT COLLATE NOCASE,
    OrderExpireMonth TEXT COLLATE NOCASE,
    OrderExpireYear TEXT COLLATE NOCASE,
    ShippingMethod TEXT COLLATE NOCASE,
    ShippingDate TEXT COLLATE NOCASE,
    ShippingTrackingNumber TEXT COLLATE NOCASE,
    ShippingInsuranceNumber TEXT COLLATE NOCASE,
    AuctionNotes TEXT COLLATE NOCASE,
    EmailEndOfAuction INTEGER DEFAULT 0,
    EmailEndOfAuctionDate TEXT COLLATE NOCASE,
    EmailPaymentReceived INTEGER DEFAULT 0,
    EmailPaymentReceivedDate TEXT COLLATE NOCASE,
    EmailItemShipped INTEGER DEFAULT 0,
    EmailItemShippedDate TEXT COLLATE NOCASE,
    EmailBuyerReceived INTEGER DEFAULT 0,
    EmailBuyerReceivedDate TEXT COLLATE NOCASE,
    EmailRequestFeedback INTEGER DEFAULT 0,
    EmailRequestFeedbackDate TEXT COLLATE NOCASE,
    FeedbackLeft INTEGER DEFAULT 0,
    FeedbackLeftDate TEXT COLLATE NOCASE,
    FeedbackLeftType INTEGER,
    FeedbackLeftComment TEXT COLLATE NOCASE,
    ReturnFeedback INTEGER DEFAULT 0,
    ReturnFeedbackDate TEXT COLLATE NOCASE,
    ReturnFeedbackType INTEGER,
    ReturnFeedbackComment TEXT COLLATE NOCASE,
    PackingListPrinted INTEGER DEFAULT 0,
    ToDoComplete INTEGER DEFAULT 0,
    HighBidNum REAL GENERATED ALWAYS AS (CASE WHEN HighBid IS NULL THEN 0 WHEN HighBid GLOB '$[0-9]*' AND HighBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(HighBid,2),',','') AS REAL) WHEN ltrim(HighBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ItemCostNum REAL GENERATED ALWAYS AS (CASE WHEN ItemCost IS NULL THEN 0 WHEN ItemCost GLOB '$[0-9]*' AND ItemCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ItemCost,2),',','') AS REAL) WHEN ltrim(ItemCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    ShippingCostNum REAL GENERATED ALWAYS AS (CASE WHEN ShippingCost IS NULL THEN 0 WHEN ShippingCost GLOB '$[0-9]*' AND ShippingCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ShippingCost,2),',','') AS REAL) WHEN ltrim(ShippingCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ShippingCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    InsuranceCostNum REAL GENERATED ALWAYS AS (CASE WHEN InsuranceCost IS NULL THEN 0 WHEN InsuranceCost GLOB '$[0-9]*' AND InsuranceCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(InsuranceCost,2),',','') AS REAL) WHEN ltrim(InsuranceCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(InsuranceCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderShippingNum REAL GENERATED ALWAYS AS (CASE WHEN OrderShipping IS NULL THEN 0 WHEN OrderShipping GLOB '$[0-9]*' AND OrderShipping NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderShipping,2),',','') AS REAL) WHEN ltrim(OrderShipping,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderTaxNum REAL GENERATED ALWAYS AS (CASE WHEN OrderTax IS NULL THEN 0 WHEN OrderTax GLOB '$[0-9]*' AND OrderTax NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderTax,2),',','') AS REAL) WHEN ltrim(OrderTax,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderAmountofSaleNum REAL GENERATED ALWAYS AS (CASE WHEN OrderAmountofSale IS NULL THEN 0 WHEN OrderAmountofSale GLOB '$[0-9]*' AND OrderAmountofSale NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderAmountofSale,2),',','') AS REAL) WHEN ltrim(OrderAmountofSale,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderAmountofSale,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED
);
CREATE UNIQUE INDEX DutchKey ON Dutch (ItemNumber, UserName, HighBidderName);
CREATE INDEX DutchByUser ON Dutch (UserName);

-- One row per winner of a multi-winner item the user bid on, shaped like a
-- Bids row. The user's own win is the row whose HighBidderName is the user's
-- ID on the site (or that is marked Winning).
CREATE TABLE DutchBids (
    ItemNumber TEXT COLLATE NOCASE,
    HighBidderName TEXT COLLATE NOCASE,
    UserName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    ItemTitle TEXT COLLATE NOCASE,
    ItemCategory TEXT COLLATE NOCASE,
    StartDate TEXT COLLATE NOCASE,
    EndDate TEXT COLLATE NOCASE,
    MinimumBid TEXT COLLATE NOCASE,
    NumberBids TEXT COLLATE NOCASE,
    Quantity TEXT COLLATE NOCASE,
    HighBid TEXT COLLATE NOCASE,
    MaximumBid TEXT COLLATE NOCASE,
    HighBidderFeedback TEXT COLLATE NOCASE,
    SellerName TEXT COLLATE NOCASE,
    SellerFeedback TEXT COLLATE NOCASE,
    Winning INTEGER DEFAULT 0,
    OrderShipping TEXT COLLATE NOCASE,
    OrderTax TEXT COLLATE NOCASE,
    HighBidNum REAL GENERATED ALWAYS AS (CASE WHEN HighBid IS NULL THEN 0 WHEN HighBid GLOB '$[0-9]*' AND HighBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(HighBid,2),',','') AS REAL) WHEN ltrim(HighBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(HighBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    MinimumBidNum REAL GENERATED ALWAYS AS (CASE WHEN MinimumBid IS NULL THEN 0 WHEN MinimumBid GLOB '$[0-9]*' AND MinimumBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(MinimumBid,2),',','') AS REAL) WHEN ltrim(MinimumBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(MinimumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    MaximumBidNum REAL GENERATED ALWAYS AS (CASE WHEN MaximumBid IS NULL THEN 0 WHEN MaximumBid GLOB '$[0-9]*' AND MaximumBid NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(MaximumBid,2),',','') AS REAL) WHEN ltrim(MaximumBid,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(MaximumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(MaximumBid,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderShippingNum REAL GENERATED ALWAYS AS (CASE WHEN OrderShipping IS NULL THEN 0 WHEN OrderShipping GLOB '$[0-9]*' AND OrderShipping NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderShipping,2),',','') AS REAL) WHEN ltrim(OrderShipping,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderShipping,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    OrderTaxNum REAL GENERATED ALWAYS AS (CASE WHEN OrderTax IS NULL THEN 0 WHEN OrderTax GLOB '$[0-9]*' AND OrderTax NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(OrderTax,2),',','') AS REAL) WHEN ltrim(OrderTax,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(OrderTax,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    EndDay TEXT GENERATED ALWAYS AS (CASE WHEN EndDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(EndDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(EndDate,7,2) || '-' || substr(EndDate,1,2) || '-' || substr(EndDate,4,2) END) STORED,
    EndYear INTEGER GENERATED ALWAYS AS (CAST(substr(EndDay,1,4) AS INTEGER)) STORED,
    EndStamp TEXT GENERATED ALWAYS AS (CASE WHEN EndDay IS NOT NULL THEN EndDay || ' ' || substr(EndDate,11,8) END) STORED
);
CREATE UNIQUE INDEX DutchBidsKey ON DutchBids (ItemNumber, HighBidderName, UserName);
CREATE INDEX DutchBidsByUser ON DutchBids (UserName, HighBidderName);
-- A won share is found from its Bids row by item and user.
CREATE INDEX DutchBidsByItem ON DutchBids (ItemNumber, UserName);

-- The site's account statement as scraped. AccountDay and DateDay are the
-- days of AccountDate and Date; AccountYear is the year the analysis sums by.
CREATE TABLE AccountInfo (
    UserName TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    ItemNumber TEXT COLLATE NOCASE,
    AccountDate TEXT COLLATE NOCASE,
    "Date" TEXT COLLATE NOCASE,
    AccountType TEXT COLLATE NOCASE,
    Debit TEXT COLLATE NOCASE,
    Credit TEXT COLLATE NOCASE,
    SoldPrice TEXT COLLATE NOCASE,
    DebitNum REAL GENERATED ALWAYS AS (CASE WHEN Debit IS NULL THEN 0 WHEN Debit GLOB '$[0-9]*' AND Debit NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(Debit,2),',','') AS REAL) WHEN ltrim(Debit,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(Debit,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(Debit,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    CreditNum REAL GENERATED ALWAYS AS (CASE WHEN Credit IS NULL THEN 0 WHEN Credit GLOB '$[0-9]*' AND Credit NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(Credit,2),',','') AS REAL) WHEN ltrim(Credit,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(Credit,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(Credit,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    SoldPriceNum REAL GENERATED ALWAYS AS (CASE WHEN SoldPrice IS NULL THEN 0 WHEN SoldPrice GLOB '$[0-9]*' AND SoldPrice NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(SoldPrice,2),',','') AS REAL) WHEN ltrim(SoldPrice,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(SoldPrice,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(SoldPrice,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED,
    AccountDay TEXT GENERATED ALWAYS AS (CASE WHEN AccountDate GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(AccountDate,7,2) < '97' THEN '20' ELSE '19' END) || substr(AccountDate,7,2) || '-' || substr(AccountDate,1,2) || '-' || substr(AccountDate,4,2) END) STORED,
    DateDay TEXT GENERATED ALWAYS AS (CASE WHEN Date GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(Date,7,2) < '97' THEN '20' ELSE '19' END) || substr(Date,7,2) || '-' || substr(Date,1,2) || '-' || substr(Date,4,2) END) STORED,
    AccountYear INTEGER GENERATED ALWAYS AS (CAST(substr(COALESCE(AccountDay, DateDay),1,4) AS INTEGER)) STORED
);
CREATE INDEX AccountInfoByUserYear ON AccountInfo (UserName, AccountYear);
CREATE INDEX AccountInfoByItem ON AccountInfo (ItemNumber);

---------------------------------------------------------------------------
-- Trade partners
---------------------------------------------------------------------------

-- Address book, one row per partner and site. Nothing but the key and the
-- address stands here: the address task judges a row by its address columns.
CREATE TABLE Buyers (
    BuyerID TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    Salutation TEXT COLLATE NOCASE,
    Title TEXT COLLATE NOCASE,
    FirstName TEXT COLLATE NOCASE,
    MiddleName TEXT COLLATE NOCASE,
    LastName TEXT COLLATE NOCASE,
    Company TEXT COLLATE NOCASE,
    StreetAddress1 TEXT COLLATE NOCASE,
    StreetAddress2 TEXT COLLATE NOCASE,
    City TEXT COLLATE NOCASE,
    State TEXT COLLATE NOCASE,
    ZipCode TEXT COLLATE NOCASE,
    CountryInfo TEXT COLLATE NOCASE,
    PhoneNumber TEXT COLLATE NOCASE,
    FaxNumber TEXT COLLATE NOCASE,
    Email TEXT COLLATE NOCASE
);
CREATE UNIQUE INDEX BuyersKey ON Buyers (BuyerID, AuctionSiteFlag);

CREATE TABLE Sellers (
    SellerID TEXT COLLATE NOCASE,
    AuctionSiteFlag INTEGER DEFAULT 0,
    Salutation TEXT COLLATE NOCASE,
    Title TEXT COLLATE NOCASE,
    FirstName TEXT COLLATE NOCASE,
    MiddleName TEXT COLLATE NOCASE,
    LastName TEXT COLLATE NOCASE,
    Company TEXT COLLATE NOCASE,
    StreetAddress1 TEXT COLLATE NOCASE,
    StreetAddress2 TEXT COLLATE NOCASE,
    City TEXT COLLATE NOCASE,
    State TEXT COLLATE NOCASE,
    ZipCode TEXT COLLATE NOCASE,
    CountryInfo TEXT COLLATE NOCASE,
    PhoneNumber TEXT COLLATE NOCASE,
    FaxNumber TEXT COLLATE NOCASE,
    Email TEXT COLLATE NOCASE
);
CREATE UNIQUE INDEX SellersKey ON Sellers (SellerID, AuctionSiteFlag);

---------------------------------------------------------------------------
-- Task manager
---------------------------------------------------------------------------

-- The two task trees (Auction? 1 sales, 0 bids), one row per node, in the
-- order the tree is built: a parent always comes before its children, so
-- readers take the rows in rowid order.
CREATE TABLE ToDo (
    "Key" TEXT COLLATE NOCASE,
    "Auction?" INTEGER DEFAULT 0,
    Relative TEXT COLLATE NOCASE,
    Relationship INTEGER,
    Description TEXT COLLATE NOCASE,
    StartImage INTEGER,
    isFolder INTEGER DEFAULT 0,
    "Function" TEXT COLLATE NOCASE,
    Parameter TEXT COLLATE NOCASE,
    AdditionalParam1 TEXT COLLATE NOCASE,
    AdditionalParam2 TEXT COLLATE NOCASE,
    AdditionalParam3 TEXT COLLATE NOCASE,
    AdditionalParam4 TEXT COLLATE NOCASE,
    AdditionalParam5 TEXT COLLATE NOCASE
);
CREATE UNIQUE INDEX ToDoKey ON ToDo ("Auction?", "Key");

-- Saved task filters: FilterName names a view below (and FilterName plus
-- " (Dutch)" its multi-winner twin).
CREATE TABLE "ToDo Filters" (
    FilterName TEXT COLLATE NOCASE,
    Description TEXT COLLATE NOCASE,
    AuctionFilter INTEGER DEFAULT 0,
    AllUsers INTEGER DEFAULT 0,
    UserName TEXT COLLATE NOCASE,
    Relationship INTEGER,
    Relative TEXT COLLATE NOCASE,
    StartImage INTEGER
);

---------------------------------------------------------------------------
-- Auction creator and categories
---------------------------------------------------------------------------

-- One listing document per row. Row ID 1 is the system's "Default" document,
-- which the Default button always loads.
CREATE TABLE AuctionCreator (
    ID INTEGER PRIMARY KEY AUTOINCREMENT,
    UserName TEXT COLLATE NOCASE,      -- also written Username
    ACType TEXT COLLATE NOCASE,        -- "Draft", "Template", "Old Auction", "Default"
    AuctionName TEXT COLLATE NOCASE,
    CreationDate TEXT COLLATE NOCASE,
    Outbox INTEGER DEFAULT 0,
    InventoryID INTEGER DEFAULT 0,
    IncludeLongTitle INTEGER DEFAULT 0,
    ItemTitleLong TEXT COLLATE NOCASE,
    ItemDescription TEXT COLLATE NOCASE,
    AuctionHTML TEXT COLLATE NOCASE,
    MinimumBid REAL,
    Quantity INTEGER,
    Shipping REAL,
    ShippingMethod TEXT COLLATE NOCASE,
    Insurance REAL,
    YourItemCost REAL,
    Reserve REAL,
    SellPrice REAL,
    PictureLinks TEXT COLLATE NOCASE,
    PictureIconActivate TEXT COLLATE NOCASE,
    IncludeGallery INTEGER DEFAULT 0,
    GalleryLink TEXT COLLATE NOCASE,
    ItemLocation TEXT COLLATE NOCASE,
    Country INTEGER,
    eBayRegion INTEGER,
    eBayAuctionTitle TEXT COLLATE NOCASE,
    eBayCategory TEXT COLLATE NOCASE,
    eBayDuration TEXT COLLATE NOCASE,
    eBayOptionalSettings TEXT COLLATE NOCASE,
    eBayGiftIcon INTEGER,
    eBayPaymentPrefs TEXT COLLATE NOCASE,
    eBayShipPrefs TEXT COLLATE NOCASE,
    eBayShipAbroadPref INTEGER DEFAULT 0,
    eBayShipUSPlus INTEGER DEFAULT 0,
    eBaynorthamerica INTEGER DEFAULT 0,
    eBayeurope INTEGER DEFAULT 0,
    eBayoceania INTEGER DEFAULT 0,
    eBayasia INTEGER DEFAULT 0,
    eBaysouthamerica INTEGER DEFAULT 0,
    eBayafrica INTEGER DEFAULT 0,
    eBaylatinamerica INTEGER DEFAULT 0,
    eBaymiddleeast INTEGER DEFAULT 0,
    eBaycaribbean INTEGER DEFAULT 0,
    PDInclude0 INTEGER DEFAULT 0,
    PDInclude1 INTEGER DEFAULT 0,
    PDCaption0 TEXT COLLATE NOCASE,
    PDCaption1 TEXT COLLATE NOCASE,
    PDMessage0 TEXT COLLATE NOCASE,
    PDMessage1 TEXT COLLATE NOCASE,
    PDQuantityInclude INTEGER DEFAULT 0,
    PDQuantity INTEGER,
    TDInclude0 INTEGER DEFAULT 0,
    TDInclude1 INTEGER DEFAULT 0,
    TDInclude2 INTEGER DEFAULT 0,
    TDInclude3 INTEGER DEFAULT 0,
    TDInclude4 INTEGER DEFAULT 0,
    TDMessage0 TEXT COLLATE NOCASE,
    TDMessage1 TEXT COLLATE NOCASE,
    TDMessage2 TEXT COLLATE NOCASE,
    TDMessage3 TEXT COLLATE NOCASE,
    TDMessage4 TEXT COLLATE NOCASE,
    TDCaption0 TEXT COLLATE NOCASE,
    TDCaption1 TEXT COLLATE NOCASE,
    TDCaption2 TEXT COLLATE NOCASE,
    OCInclude0 INTEGER DEFAULT 0,
    OCInclude1 INTEGER DEFAULT 0,
    OCInclude2 INTEGER DEFAULT 0,
    OCaption0 TEXT COLLATE NOCASE,
    OCaption1 TEXT COLLATE NOCASE,
    OCaption2 TEXT COLLATE NOCASE,
    LinkIncludeSE INTEGER DEFAULT 0,
    LinkEmailCaption TEXT COLLATE NOCASE,
    LinkEmailAddress TEXT COLLATE NOCASE,
    LinkInclude0 INTEGER DEFAULT 0,
    LinkInclude1 INTEGER DEFAULT 0,
    LinkCaption0 TEXT COLLATE NOCASE,
    LinkCaption1 TEXT COLLATE NOCASE,
    LinkLink0 TEXT COLLATE NOCASE,
    LinkLink1 TEXT COLLATE NOCASE,
    eBayIncludeLTA INTEGER DEFAULT 0,
    eBayLinktoAuctions TEXT COLLATE NOCASE,
    PayPalLogo INTEGER,
    PayPalemail TEXT COLLATE NOCASE,
    CounterChoice INTEGER,
    AuctionStyle TEXT COLLATE NOCASE,
    AuctionBGColor TEXT COLLATE NOCASE,
    AuctionThemeColor TEXT COLLATE NOCASE,
    AuctionFontColor TEXT COLLATE NOCASE,
    AuctionFontType TEXT COLLATE NOCASE,
    AuctionTiledBGLink TEXT COLLATE NOCASE,
    TileBGImage INTEGER DEFAULT 0,
    PictureSize INTEGER DEFAULT 0,
    PictureReturn INTEGER DEFAULT 0,
    DefaultFontSize INTEGER,
    billpointcreditcard INTEGER DEFAULT 0,
    billpointechecks INTEGER DEFAULT 0,
    billpointinstantpurchase INTEGER DEFAULT 0,
    billpointaddicon INTEGER DEFAULT 0,
    billpointshipping REAL,
    billpointadditionalshipping REAL,
    billpointsalestax REAL,
    billpointsalestaxstate TEXT COLLATE NOCASE,
    billpointreturnpolicy TEXT COLLATE NOCASE
);
CREATE INDEX AuctionCreatorByType ON AuctionCreator (ACType, UserName);

-- The user's favourite texts by list (UrlType 0 to 9).
CREATE TABLE Urls (
    UserName TEXT COLLATE NOCASE,      -- also written Username
    UrlType INTEGER,
    Url TEXT COLLATE NOCASE
);
CREATE INDEX UrlsByUser ON Urls (UserName, UrlType);

CREATE TABLE eBayCategories (
    CategoryNumber TEXT COLLATE NOCASE,
    CategoryName TEXT COLLATE NOCASE,
    MetaCategoryName TEXT COLLATE NOCASE
);
CREATE INDEX eBayCategoriesByNumber ON eBayCategories (CategoryNumber);
CREATE INDEX eBayCategoriesByMeta ON eBayCategories (MetaCategoryName);

-- The top-level category names. The browse list reads the column under its
-- longer name "MetaCategoryName Field" too; both name the same value.
CREATE TABLE MetaCategories (
    MetaCategoryName TEXT COLLATE NOCASE,
    "MetaCategoryName Field" TEXT COLLATE NOCASE GENERATED ALWAYS AS (MetaCategoryName) VIRTUAL
);

CREATE TABLE FavoriteCategories (
    UserName TEXT COLLATE NOCASE,
    CategoryNumber TEXT COLLATE NOCASE,
    CategoryName TEXT COLLATE NOCASE
);
CREATE INDEX FavoriteCategoriesByUser ON FavoriteCategories (UserName, CategoryNumber);

---------------------------------------------------------------------------
-- Inventory
---------------------------------------------------------------------------

-- Folder 1 "General" is the system folder; FolderParent 0 marks a top
-- folder. DefaultTemplate is the AuctionCreator ID of the template associated
-- with the folder (Null: none).
CREATE TABLE InventoryFolders (
    FolderID INTEGER PRIMARY KEY AUTOINCREMENT,
    FolderName TEXT COLLATE NOCASE,
    FolderParent INTEGER DEFAULT 0,
    LWProId INTEGER,
    DefaultTemplate INTEGER
);
CREATE INDEX InventoryFoldersByParent ON InventoryFolders (FolderParent);

-- One row per stock item: stock data and a listing preset.
CREATE TABLE Inventory (
    ID INTEGER PRIMARY KEY AUTOINCREMENT,
    ID2 TEXT COLLATE NOCASE,
    UserName TEXT COLLATE NOCASE,      -- also written Username
    Folder INTEGER DEFAULT 0,
    ITitle TEXT COLLATE NOCASE,
    ATitle TEXT COLLATE NOCASE,
    Description TEXT COLLATE NOCASE,
    Notes TEXT COLLATE NOCASE,
    Quantity INTEGER,
    ItemCost TEXT COLLATE NOCASE,
    MinimumBid TEXT COLLATE NOCASE,
    Reserve TEXT COLLATE NOCASE,
    TakeItPrice TEXT COLLATE NOCASE,
    ShippingCost TEXT COLLATE NOCASE,
    InsuranceCost TEXT COLLATE NOCASE,
    ShippingCarrier TEXT COLLATE NOCASE,
    DateEntered TEXT COLLATE NOCASE,
    Condition TEXT COLLATE NOCASE,
    Duration TEXT COLLATE NOCASE,
    "Default" INTEGER DEFAULT 0,
    DefaultTemplate INTEGER,
    GiftIcon TEXT COLLATE NOCASE,
    AuctionOptions TEXT COLLATE NOCASE,
    PictureLinks TEXT COLLATE NOCASE,
    eBayCategory TEXT COLLATE NOCASE,
    ShipPayPref TEXT COLLATE NOCASE,
    PaymentTypePref TEXT COLLATE NOCASE,
    ShipUSPlus INTEGER DEFAULT 0,
    ShipAbroadPref INTEGER DEFAULT 0,
    northamerica INTEGER DEFAULT 0,
    europe INTEGER DEFAULT 0,
    oceania INTEGER DEFAULT 0,
    asia INTEGER DEFAULT 0,
    southamerica INTEGER DEFAULT 0,
    africa INTEGER DEFAULT 0,
    latinamerica INTEGER DEFAULT 0,
    middleeast INTEGER DEFAULT 0,
    caribbean INTEGER DEFAULT 0,
    LocationPref TEXT COLLATE NOCASE,
    ShipFromCountryPref TEXT COLLATE NOCASE,
    ZipCodePref TEXT COLLATE NOCASE
);
CREATE INDEX InventoryByUserFolder ON Inventory (UserName, Folder);

-- Stock movements of an item: ID is the item's Inventory.ID, ID1 the row's
-- own key. TransactionType 1 Acquired, 2 Sold, 3 Loss.
CREATE TABLE Transactions (
    ID1 INTEGER PRIMARY KEY AUTOINCREMENT,
    ID INTEGER,
    TransDate TEXT COLLATE NOCASE,
    TransactionType INTEGER,
    ItemCost TEXT COLLATE NOCASE,
    Quantity INTEGER,
    Why TEXT COLLATE NOCASE,
    WhoSold TEXT COLLATE NOCASE,
    AverageCost TEXT COLLATE NOCASE,
    AverageSellPrice TEXT COLLATE NOCASE,
    ItemCostNum REAL GENERATED ALWAYS AS (CASE WHEN ItemCost IS NULL THEN 0 WHEN ItemCost GLOB '$[0-9]*' AND ItemCost NOT GLOB '?*[$ £€¥]*' THEN CAST(replace(substr(ItemCost,2),',','') AS REAL) WHEN ltrim(ItemCost,'$, £€¥') GLOB '(*' THEN -CAST(substr(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥',''),2) AS REAL) ELSE IFNULL(CAST(replace(replace(replace(replace(replace(replace(ItemCost,'$',''),',',''),' ',''),'£',''),'€',''),'¥','') AS REAL),0) END) STORED
);
CREATE INDEX TransactionsByItem ON Transactions (ID, TransDate);

---------------------------------------------------------------------------
-- Saved queries
---------------------------------------------------------------------------
--
-- The cut between current and archived rows is the end day against today's
-- local date:
--   archived  EndDay < date('now','localtime'): the item ended on a day
--             before today, which is the analysis rule
--             DateDiff('d', Now(), Left$(EndDate,8)) < 0;
--   current   every other row: ending today or later, and every row whose
--             EndDate is not a date ("n/a", Null), so that no row is ever
--             hidden from both lists.
-- An item that ended this morning is thus still current (its time left reads
-- "Ended") until midnight.
--
-- The task queries need an ended item the moment it ends, since the first
-- mail goes out then: they take the rows whose EndDay is today or before,
-- and the task list drops those whose time left is not yet "Ended". A row
-- without a readable end day is never a task. An item is pending while its
-- ToDoComplete is not True.
--
-- The analysis queries (Auctions Query, Bids Query, Dutch Query) and the
-- partner history (Completed Auctions, Completed Bids) count archived rows
-- only, as the analysis rule does.
--
-- Views over one table expose all its columns under their own names (the
-- generated columns included); a caller that writes a table-qualified name
-- ("Auctions.EndDate") reads it by the bare name.

CREATE VIEW CurrentAuctions AS
    SELECT Auctions.* FROM Auctions
    WHERE Auctions.EndDay IS NULL OR Auctions.EndDay >= (SELECT date('now', 'localtime'));

CREATE VIEW ArchivedAuctions AS
    SELECT Auctions.* FROM Auctions
    WHERE Auctions.EndDay < (SELECT date('now', 'localtime'));

CREATE VIEW CurrentBids AS
    SELECT Bids.* FROM Bids
    WHERE Bids.EndDay IS NULL OR Bids.EndDay >= (SELECT date('now', 'localtime'));

CREATE VIEW ArchivedBids AS
    SELECT Bids.* FROM Bids
    WHERE Bids.EndDay < (SELECT date('now', 'localtime'));

-- Every winner row of the multi-winner items the user bid on; callers pick the
-- user's own by HighBidderName. The day is the row's own, else its Bids row's.
CREATE VIEW CurrentDutchBids AS
    SELECT DutchBids.* FROM DutchBids
    LEFT JOIN Bids ON Bids.ItemNumber = DutchBids.ItemNumber
                  AND Bids.UserName = DutchBids.UserName
                  AND Bids.AuctionSiteFlag = DutchBids.AuctionSiteFlag
    WHERE COALESCE(DutchBids.EndDay, Bids.EndDay) IS NULL
       OR COALESCE(DutchBids.EndDay, Bids.EndDay) >= (SELECT date('now', 'localtime'));

CREATE VIEW ArchivedDutchBids AS
    SELECT DutchBids.* FROM DutchBids
    LEFT JOIN Bids ON Bids.ItemNumber = DutchBids.ItemNumber
                  AND Bids.UserName = DutchBids.UserName
                  AND Bids.AuctionSiteFlag = DutchBids.AuctionSiteFlag
    WHERE COALESCE(DutchBids.EndDay, Bids.EndDay) < (SELECT date('now', 'localtime'));

-- One row per winner of a multi-winner sale: the winner's own columns from
-- Dutch (price, quantity, order and task columns, AuctionNotes) and the item's
-- columns from its Auctions row. The money columns are the texts as written
-- ("$12.50"); their numbers are the *Num columns.
CREATE VIEW "Dutch Details" AS
    SELECT Dutch.*,
           Auctions.ItemTitle, Auctions.ItemCategory, Auctions.StartDate, Auctions.EndDate,
           Auctions.MinimumBid, Auctions.ReserveBid, Auctions.NumberBids,
           Auctions.AuctionCreatorID, Auctions.InventoryID,
           Auctions.StartDay, Auctions.EndDay, Auctions.EndYear, Auctions.EndStamp,
           Auctions.MinimumBidNum, Auctions.ReserveBidNum
    FROM Dutch
    LEFT JOIN Auctions ON Auctions.ItemNumber = Dutch.ItemNumber
                      AND Auctions.UserName = Dutch.UserName
                      AND Auctions.AuctionSiteFlag = Dutch.AuctionSiteFlag;

-- The user's own wins among the winners of multi-winner items.
CREATE VIEW "Successful Dutch Bids" AS
    SELECT DutchBids.* FROM DutchBids
    WHERE DutchBids.Winning <> 0
       OR EXISTS (SELECT 1 FROM UserSites
                  WHERE UserSites.UserName = DutchBids.UserName
                    AND UserSites.AuctionSiteFlag = DutchBids.AuctionSiteFlag
                    AND UserSites.UserID = DutchBids.HighBidderName);

-- Sales that found a buyer, one row per buyer: plain sales whose high bid met
-- the reserve, and each winner of a multi-winner sale. The partner history
-- and the stock recount read these.
CREATE VIEW "Completed Auctions" AS
    SELECT Auctions.UserName, Auctions.AuctionSiteFlag, Auctions.ItemNumber,
           Auctions.ItemTitle, Auctions.ItemCategory, Auctions.StartDate, Auctions.EndDate,
           Auctions.HighBidderName, Auctions.HighBidderFeedback, Auctions.HighBid,
           Auctions.Quantity, Auctions.InventoryID, Auctions.AuctionCreatorID,
           Auctions.ItemCost, Auctions.AuctionNotes,
           Auctions.HighBidNum, Auctions.ItemCostNum, Auctions.EndDay, Auctions.EndYear
    FROM Auctions
    WHERE Auctions.EndDay < (SELECT date('now', 'localtime'))
      AND Auctions.HighBidderName NOT IN ('Dutch Auction', '-', 'n/a', '')
      AND Auctions.HighBidNum > 0
      AND Auctions.HighBidNum >= Auctions.ReserveBidNum
    UNION ALL
    SELECT Dutch.UserName, Dutch.AuctionSiteFlag, Dutch.ItemNumber,
           Auctions.ItemTitle, Auctions.ItemCategory, Auctions.StartDate, Auctions.EndDate,
           Dutch.HighBidderName, Dutch.HighBidderFeedback, Dutch.HighBid,
           Dutch.Quantity, Auctions.InventoryID, Auctions.AuctionCreatorID,
           Dutch.ItemCost, Dutch.AuctionNotes,
           Dutch.HighBidNum, Dutch.ItemCostNum, Auctions.EndDay, Auctions.EndYear
    FROM Dutch
    JOIN Auctions ON Auctions.ItemNumber = Dutch.ItemNumber
                 AND Auctions.UserName = Dutch.UserName
                 AND Auctions.AuctionSiteFlag = Dutch.AuctionSiteFlag
    WHERE Auctions.EndDay < (SELECT date('now', 'localtime'));

-- Bids the user won, once they are archived.
CREATE VIEW "Completed Bids" AS
    SELECT Bids.* FROM Bids
    WHERE Bids.Winning <> 0
      AND Bids.EndDay < (SELECT date('now', 'localtime'));

-- Ended plain sales with a buyer and open tasks. A sale whose high bid fell
-- short of the reserve has no buyer and so no task. Multi-winner sales come
-- through the (Dutch) twin, one row per winner.
CREATE VIEW "All Auctions with Pending Tasks" AS
    SELECT Auctions.* FROM Auctions
    WHERE Auctions.EndDay <= (SELECT date('now', 'localtime'))
      AND IFNULL(Auctions.ToDoComplete, 0) = 0
      AND Auctions.HighBidderName NOT IN ('Dutch Auction', '-', 'n/a', '')
      AND IFNULL(Auctions.NumberBids, '') <> '-'
      AND Auctions.HighBidNum >= Auctions.ReserveBidNum;

-- The unary + keeps the planner on the user's winner rows, a few, rather than
-- on every ended sale of the user.
CREATE VIEW "All Auctions with Pending Tasks (Dutch)" AS
    SELECT "Dutch Details".* FROM "Dutch Details"
    WHERE +"Dutch Details".EndDay <= (SELECT date('now', 'localtime'))
      AND IFNULL("Dutch Details".ToDoComplete, 0) = 0;

-- Ended bids the user won, with open tasks. Multi-winner items come through
-- the (Dutch) twin.
CREATE VIEW "All Bids with Pending Tasks" AS
    SELECT Bids.* FROM Bids
    WHERE Bids.EndDay <= (SELECT date('now', 'localtime'))
      AND IFNULL(Bids.ToDoComplete, 0) = 0
      AND Bids.Winning <> 0
      AND IFNULL(Bids.HighBidderName, '') <> 'Dutch Auction';

-- Multi-winner items the user won a share of. The task state is the Bids
-- row's; the user's own price and quantity stand under the qualified names.
CREATE VIEW "All Bids with Pending Tasks (Dutch)" AS
    SELECT Bids.*,
           "Successful Dutch Bids".HighBid AS "Successful Dutch Bids.HighBid",
           "Successful Dutch Bids".Quantity AS "Successful Dutch Bids.Quantity",
           "Successful Dutch Bids".HighBidNum AS "Successful Dutch Bids.HighBidNum"
    FROM Bids
    JOIN "Successful Dutch Bids"
      ON "Successful Dutch Bids".ItemNumber = Bids.ItemNumber
     AND "Successful Dutch Bids".UserName = Bids.UserName
     AND "Successful Dutch Bids".AuctionSiteFlag = Bids.AuctionSiteFlag
    WHERE Bids.EndDay <= (SELECT date('now', 'localtime'))
      AND IFNULL(Bids.ToDoComplete, 0) = 0
      AND Bids.HighBidderName = 'Dutch Auction';

-- Narrower task filters over the four above.
CREATE VIEW "Auctions Awaiting Payment" AS
    SELECT * FROM "All Auctions with Pending Tasks"
    WHERE IFNULL(OrderPaymentMethod, -1) < 0;

CREATE VIEW "Auctions Awaiting Payment (Dutch)" AS
    SELECT * FROM "All Auctions with Pending Tasks (Dutch)"
    WHERE IFNULL(OrderPaymentMethod, -1) < 0;

CREATE VIEW "Auctions Not Yet Shipped" AS
    SELECT * FROM "All Auctions with Pending Tasks"
    WHERE ShippingDate IS NULL;

CREATE VIEW "Auctions Not Yet Shipped (Dutch)" AS
    SELECT * FROM "All Auctions with Pending Tasks (Dutch)"
    WHERE ShippingDate IS NULL;

CREATE VIEW "Auctions Awaiting Feedback" AS
    SELECT * FROM "All Auctions with Pending Tasks"
    WHERE IFNULL(FeedbackLeft, 0) = 0;

CREATE VIEW "Auctions Awaiting Feedback (Dutch)" AS
    SELECT * FROM "All Auctions with Pending Tasks (Dutch)"
    WHERE IFNULL(FeedbackLeft, 0) = 0;

CREATE VIEW "Bids Not Yet Paid" AS
    SELECT * FROM "All Bids with Pending Tasks"
    WHERE IFNULL(OrderPaymentMethod, -1) < 0;

CREATE VIEW "Bids Not Yet Paid (Dutch)" AS
    SELECT * FROM "All Bids with Pending Tasks (Dutch)"
    WHERE IFNULL(OrderPaymentMethod, -1) < 0;

CREATE VIEW "Bids Not Yet Received" AS
    SELECT * FROM "All Bids with Pending Tasks"
    WHERE ItemReceivedDate IS NULL;

CREATE VIEW "Bids Not Yet Received (Dutch)" AS
    SELECT * FROM "All Bids with Pending Tasks (Dutch)"
    WHERE ItemReceivedDate IS NULL;

-- The analysis: ended sales that met the reserve and drew a bid, by Year.
-- The parent row of a multi-winner sale is left out: Dutch Query counts its
-- winners.
CREATE VIEW "Auctions Query" AS
    SELECT Auctions.*, Auctions.EndYear AS Year
    FROM Auctions
    WHERE Auctions.SaleCounted = 1
      -- The unary + keeps the planner on the covering index above, whose
      -- order already groups by year.
      AND +Auctions.EndDay < (SELECT date('now', 'localtime'));

-- Winners of ended multi-winner sales: HighBidTotal is the winner's price
-- times the winner's quantity (1 when the quantity is not a number).
CREATE VIEW "Dutch Query" AS
    SELECT Dutch.*,
           Auctions.ItemTitle, Auctions.EndDate, Auctions.EndDay,
           Auctions.EndYear AS Year,
           Dutch.HighBidNum * (CASE WHEN CAST(Dutch.Quantity AS INTEGER) > 0
                                    THEN CAST(Dutch.Quantity AS INTEGER) ELSE 1 END) AS HighBidTotal
    FROM Dutch
    JOIN Auctions ON Auctions.ItemNumber = Dutch.ItemNumber
                 AND Auctions.UserName = Dutch.UserName
                 AND Auctions.AuctionSiteFlag = Dutch.AuctionSiteFlag
    WHERE Auctions.EndDay < (SELECT date('now', 'localtime'))
      AND Dutch.HighBidNum > 0;

-- Ended bids, by Year; callers add Winning.
CREATE VIEW "Bids Query" AS
    SELECT Bids.*, Bids.EndYear AS Year
    FROM Bids
    WHERE Bids.EndDay < (SELECT date('now', 'localtime'));

-- The account statement by Year. Date is the row's own Date, else its
-- AccountDate; Day is the ISO day of that.
CREATE VIEW "AccountInfo Query" AS
    SELECT AccountInfo.UserName, AccountInfo.AuctionSiteFlag, AccountInfo.ItemNumber,
           AccountInfo.AccountDate, AccountInfo.AccountType,
           AccountInfo.Debit, AccountInfo.Credit, AccountInfo.SoldPrice,
           AccountInfo.DebitNum, AccountInfo.CreditNum, AccountInfo.SoldPriceNum,
           AccountInfo.AccountDay,
           COALESCE(AccountInfo."Date", AccountInfo.AccountDate) AS "Date",
           COALESCE(AccountInfo.DateDay, AccountInfo.AccountDay) AS Day,
           AccountInfo.AccountYear AS Year
    FROM AccountInfo;
