-- SPDX-License-Identifier: GPL-3.0-or-later
-- The rows a new Lotwright.db starts with: the two task trees and their
-- filters, the top-level categories, the one row of Global and of Tracking,
-- the system document of the auction creator and the system folder of the
-- inventory. Runs after schema.sql in the same transaction. Protocols is
-- filled by the program from the shipped rule files, never here.

---------------------------------------------------------------------------
-- Task trees
---------------------------------------------------------------------------
--
-- Rows are in build order: a node's Relative (its parent's Key) always comes
-- first. Relationship 4 puts a node under its Relative. Pictures: 1 the root,
-- 2 the summary, 4 a pending task (the item's state turns it to 3 when done),
-- 8 an open folder.
--
-- Function and its arguments:
--   Email       Parameter: the mail's three-letter code, also the extension
--               of its mail file and unique over both trees, because the
--               outbox finds the row by it; AdditionalParam1: the template;
--               AdditionalParam2/3: the item's sent flag and date column.
--   EmailEntry  AdditionalParam1: caption of the box; 2: caption of the date;
--               3: instructions; 4/5: the item's flag and date column.
--   Entry       Parameter: the record panel.
-- The Key of a mail task is its code, so that a removal rule naming SHE or
-- IRE finds the task that ends the item. The first "Email" row of the sales
-- tree is "Congratulations": the sales pop-up menu puts it first.

-- Sales tree.
INSERT INTO ToDo ("Key", "Auction?", Relative, Relationship, Description, StartImage, isFolder,
                  "Function", Parameter, AdditionalParam1, AdditionalParam2, AdditionalParam3,
                  AdditionalParam4, AdditionalParam5) VALUES
    ('SUM', 1, NULL, NULL, 'Sale Tasks', 1, 0, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SUMS', 1, 'SUM', 4, 'Sale Summary', 2, 0, 'BidSummary', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SUMN', 1, 'SUM', 4, 'Notes', 4, 0, 'NoteEntry', NULL, NULL, NULL, NULL, NULL, NULL),
    ('PRA', 1, 'SUM', 4, 'Buyer''s Address', 4, 0, 'Entry', 'Address', NULL, NULL, NULL, NULL, NULL),
    ('CON', 1, 'SUM', 4, 'Congratulations', 4, 0, 'Email', 'CON',
        'Congratulations', 'EmailEndOfAuction', 'EmailEndOfAuctionDate', NULL, NULL),
    ('SFP', 1, 'SUM', 4, 'Payment', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('PRI', 1, 'SFP', 4, 'Payment Information', 4, 0, 'Entry', 'PaymentInfo', NULL, NULL, NULL, NULL, NULL),
    ('PAY', 1, 'SFP', 4, 'Payment Received', 4, 0, 'Email', 'PAY',
        'Payment Received', 'EmailPaymentReceived', 'EmailPaymentReceivedDate', NULL, NULL),
    ('SFS', 1, 'SUM', 4, 'Shipping', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SHP', 1, 'SFS', 4, 'Packing List', 4, 0, 'Packing', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SHS', 1, 'SFS', 4, 'Shipping Information', 4, 0, 'Entry', 'Shipping', NULL, NULL, NULL, NULL, NULL),
    ('SHE', 1, 'SFS', 4, 'Item Shipped', 4, 0, 'Email', 'SHE',
        'Item Shipped', 'EmailItemShipped', 'EmailItemShippedDate', NULL, NULL),
    ('SHR', 1, 'SFS', 4, 'Buyer Received Item', 4, 0, 'EmailEntry', NULL,
        'Buyer has let me know the item arrived', 'Date told:',
        'Tick the box once the buyer has written that the item arrived safely, and enter the date of that message.',
        'EmailBuyerReceived', 'EmailBuyerReceivedDate'),
    ('SFF', 1, 'SUM', 4, 'Feedback', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('FBL', 1, 'SFF', 4, 'Feedback Left', 4, 0, 'Entry', 'FeedbackLeft', NULL, NULL, NULL, NULL, NULL),
    ('RFB', 1, 'SFF', 4, 'Request Feedback', 4, 0, 'Email', 'RFB',
        'Request Feedback', 'EmailRequestFeedback', 'EmailRequestFeedbackDate', NULL, NULL),
    ('FBR', 1, 'SFF', 4, 'Feedback Received', 4, 0, 'Entry', 'FeedbackReceived', NULL, NULL, NULL, NULL, NULL);

-- Bids tree.
INSERT INTO ToDo ("Key", "Auction?", Relative, Relationship, Description, StartImage, isFolder,
                  "Function", Parameter, AdditionalParam1, AdditionalParam2, AdditionalParam3,
                  AdditionalParam4, AdditionalParam5) VALUES
    ('SUM', 0, NULL, NULL, 'Bid Tasks', 1, 0, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SUMS', 0, 'SUM', 4, 'Bid Summary', 2, 0, 'BidSummary', NULL, NULL, NULL, NULL, NULL, NULL),
    ('SUMN', 0, 'SUM', 4, 'Notes', 4, 0, 'NoteEntry', NULL, NULL, NULL, NULL, NULL, NULL),
    ('PRA', 0, 'SUM', 4, 'Seller''s Address', 4, 0, 'Entry', 'Address', NULL, NULL, NULL, NULL, NULL),
    ('CRP', 0, 'SUM', 4, 'Reply to Congratulations', 4, 0, 'Email', 'CRP',
        'Congratulations Reply', 'EmailCongratsReply', 'EmailCongratsReplyDate', NULL, NULL),
    ('BFP', 0, 'SUM', 4, 'Payment', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('PSI', 0, 'BFP', 4, 'Please Send Payment Info', 4, 0, 'Email', 'PSI',
        'Please Send Payment Info', 'EmailPaymentInfo', 'EmailPaymentInfoDate', NULL, NULL),
    ('PRP', 0, 'BFP', 4, 'Payment Information', 4, 0, 'Entry', 'PaymentInfo', NULL, NULL, NULL, NULL, NULL),
    ('PRS', 0, 'BFP', 4, 'Remittance Advice', 4, 0, 'Packing', NULL, NULL, NULL, NULL, NULL, NULL),
    ('BFR', 0, 'SUM', 4, 'Receiving', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('IRR', 0, 'BFR', 4, 'Item Received', 4, 0, 'Entry', 'ItemReceived', NULL, NULL, NULL, NULL, NULL),
    ('IRE', 0, 'BFR', 4, 'Item Received Email', 4, 0, 'Email', 'IRE',
        'Item Received', 'EmailItemReceived', 'EmailItemReceivedDate', NULL, NULL),
    ('BFF', 0, 'SUM', 4, 'Feedback', 8, 1, 'ItemInfo', NULL, NULL, NULL, NULL, NULL, NULL),
    ('FBL', 0, 'BFF', 4, 'Feedback Left', 4, 0, 'Entry', 'FeedbackLeft', NULL, NULL, NULL, NULL, NULL),
    ('RFS', 0, 'BFF', 4, 'Request Feedback', 4, 0, 'Email', 'RFS',
        'Request Feedback (Bid)', 'EmailRequestFeedback', 'EmailRequestFeedbackDate', NULL, NULL),
    ('FBR', 0, 'BFF', 4, 'Feedback Received', 4, 0, 'Entry', 'FeedbackReceived', NULL, NULL, NULL, NULL, NULL);

-- Filters, in the order the filter list shows them. Each FilterName is a
-- view, and so is FilterName plus " (Dutch)".
INSERT INTO "ToDo Filters" (FilterName, Description, AuctionFilter, AllUsers, UserName,
                            Relationship, Relative, StartImage) VALUES
    ('All Auctions with Pending Tasks', 'Every ended sale with a task still open', 1, 1, NULL, NULL, NULL, NULL),
    ('Auctions Awaiting Payment', 'Ended sales with no payment recorded', 1, 1, NULL, NULL, NULL, NULL),
    ('Auctions Not Yet Shipped', 'Ended sales with no shipping date', 1, 1, NULL, NULL, NULL, NULL),
    ('Auctions Awaiting Feedback', 'Ended sales whose buyer has had no feedback yet', 1, 1, NULL, NULL, NULL, NULL),
    ('All Bids with Pending Tasks', 'Every won bid with a task still open', 0, 1, NULL, NULL, NULL, NULL),
    ('Bids Not Yet Paid', 'Won bids with no payment recorded', 0, 1, NULL, NULL, NULL, NULL),
    ('Bids Not Yet Received', 'Won bids whose item has not arrived', 0, 1, NULL, NULL, NULL, NULL);

---------------------------------------------------------------------------
-- Categories
---------------------------------------------------------------------------

-- The top-level names of the category browser; the category file fills
-- eBayCategories under these names.
INSERT INTO MetaCategories (MetaCategoryName) VALUES
    ('Antiques'),
    ('Art'),
    ('Books'),
    ('Business & Industrial'),
    ('Clothing & Accessories'),
    ('Coins'),
    ('Collectibles'),
    ('Computers'),
    ('Consumer Electronics'),
    ('Dolls & Bears'),
    ('Home & Garden'),
    ('Jewelry, Gems & Watches'),
    ('Movies & Television'),
    ('Music'),
    ('Photo'),
    ('Pottery & Glass'),
    ('Sports'),
    ('Stamps'),
    ('Tickets & Travel'),
    ('Toys & Hobbies'),
    ('Everything Else');

---------------------------------------------------------------------------
-- Program-wide rows
---------------------------------------------------------------------------

-- The time-left column refreshes by itself every 65535 ms ("minute"). The
-- site correction stays Null until the site's clock has been read once: Null
-- says "never measured" where 0 would claim the clocks agree, and every reader
-- takes Null as 0.
INSERT INTO Global (eBayTime, eBayCorrection, AutoUpdateTimeLeft, TimeLeftInterval)
    VALUES (NULL, NULL, 1, 65535);

INSERT INTO Tracking (TrackingDate, AuctionsPosted, Updates, RubyLaneClick, SendEmail, RubyLane,
                      Paypal, Billpoint)
    VALUES (NULL, 0, 0, 0, 0, 0, 0, 0);

-- The system document of the auction creator: ID 1, type "Default", owned by
-- no user. The Default button loads ID 1, and a new document starts from its
-- captions and choices.
INSERT INTO AuctionCreator (
    ID, UserName, ACType, AuctionName, CreationDate, Outbox, InventoryID,
    IncludeLongTitle, Quantity, PictureLinks, PictureIconActivate, IncludeGallery, GalleryLink,
    eBayDuration, eBayShipAbroadPref, eBayShipUSPlus,
    PDInclude0, PDInclude1, PDCaption0, PDCaption1, PDQuantityInclude,
    TDInclude0, TDInclude1, TDInclude2, TDInclude3, TDInclude4,
    TDCaption0, TDCaption1, TDCaption2,
    OCInclude0, OCInclude1, OCInclude2, OCaption0, OCaption1,
    LinkIncludeSE, LinkEmailCaption, LinkInclude0, LinkInclude1,
    LinkCaption0, LinkCaption1, LinkLink0, LinkLink1,
    eBayIncludeLTA, eBayLinktoAuctions, PayPalLogo, CounterChoice,
    TileBGImage, PictureSize, PictureReturn, DefaultFontSize,
    billpointcreditcard, billpointechecks, billpointinstantpurchase, billpointaddicon,
    billpointshipping, billpointadditionalshipping, billpointsalestax)
VALUES (
    1, NULL, 'Default', 'Default', datetime('now', 'localtime'), 0, 0,
    0, 1, '', 'http://', 0, 'http://',
    '7', 0, 0,
    1, 1, 'Condition:', 'Comments:', 1,
    1, 0, 1, 0, 0,
    'Payment Options:', 'Policies:', 'Comments:',
    0, 0, 0, 'NO RESERVE', 'Other Caption 2',
    0, 'Send me email', 0, 0,
    'Visit My Website', 'Other Link of Interest', 'http://', 'http://',
    1, 'See my other eBay auctions', 0, 0,
    0, 0, 0, 1,
    0, 0, 0, 0,
    0, 0, 0);

-- Folder 1 is the inventory's system folder.
INSERT INTO InventoryFolders (FolderID, FolderName, FolderParent, LWProId)
    VALUES (1, 'General', 0, NULL);
